// console_run.h
//
// Runs norvanectl inside of the test program and keeps what it wrote.
#pragma once
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "run_console.h"

struct ConsoleRun {
  int exitCode = -1;
  std::string results, errors;

  // The lines of standard output as JSON; a line that isn't JSON fails the test.
  std::vector<nlohmann::json> Events() const {
    std::vector<nlohmann::json> events;
    for (size_t start = 0; start < results.size();) {
      const size_t end = results.find('\n', start);
      const std::string line = results.substr(start, end - start);
      events.push_back(nlohmann::json::parse(line, nullptr, false));
      EXPECT_TRUE(events.back().is_object()) << line;
      start = end == std::string::npos ? results.size() : end + 1;
    }
    return events;
  }

  // The first event of this kind; fails the test if there is none.
  nlohmann::json Event(const std::string& kind) const {
    for (const nlohmann::json& event : Events()) {
      if (event.value("event", "") == kind) return event;
    }
    ADD_FAILURE() << "no event " << kind << " in:\n" << results;
    return nlohmann::json::object();
  }
};

inline ConsoleRun Norvanectl(const std::vector<std::string>& words) {
  ConsoleRun run;
  ConsoleOutput output(&run.results, &run.errors);
  run.exitCode = RunConsole(words, output);
  return run;
}
