// command_machine.h
//
// Runs norvanectl inside of the test program, on accounts and files of the test, and keeps what it wrote.
#pragma once
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "operations/path_queries.h"
#include "run_console.h"
#include "support/account_place.h"
#include "users/account_lookup.h"

using Words = std::vector<std::string>;

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

inline ConsoleRun Norvanectl(const Words& words) {
  ConsoleRun run;
  ConsoleOutput output(&run.results, &run.errors);
  run.exitCode = RunConsole(words, output);
  return run;
}

struct CommandMachine {
  AccountPlace place;
  TestPlace& files = place.files;

  std::string Path(const std::string& relative) const { return Utf8(files / relative); }

  // A run that has to end with this code, with its log beside the files.
  ConsoleRun Run(int exitCode, Words words, const Words& more = {}) const {
    words.insert(words.end(), more.begin(), more.end());
    words.insert(words.end(), {"--log", Path("norvane.log")});
    ConsoleRun run = Norvanectl(words);
    EXPECT_EQ(run.exitCode, exitCode) << testing::PrintToString(words) << "\n" << run.errors;
    return run;
  }
};

// Words behind a command that it refuses with a sentence that holds the part.
struct BadInput {
  Words words;
  const char* part;
  int exitCode = 4;
};

// Each is refused by a run and by a dry run, before anything is made.
inline void ExpectRefused(const CommandMachine& machine, const Words& command,
                          const std::vector<BadInput>& cases) {
  const std::vector<std::string> before = machine.files.List();
  for (const BadInput& c : cases) {
    for (const bool isDry : {false, true}) {
      Words words = c.words;
      if (isDry) words.push_back("--dry-run");
      const ConsoleRun run = machine.Run(c.exitCode, command, words);
      EXPECT_THAT(run.errors, testing::HasSubstr(c.part));
      EXPECT_EQ(run.results, "") << c.part;
    }
  }
  EXPECT_EQ(machine.files.List(), before);
}

// A file in the profile of an account that a command has made, wherever the system put that: the path of
// "a/b" there; empty if there is no such account.
inline WString InProfile(const std::string& account, std::string relative) {
  std::replace(relative.begin(), relative.end(), '/', '\\');
  WString sid, profile;
  if (!GetAccountSidAndProfile(Wide(account).CStr(), sid, &profile)) return WString();
  return PathBelow(profile, Wide(relative).CStr());
}

// "(missing)" if it isn't there.
inline std::string ReadInProfile(const std::string& account, const std::string& relative) {
  const WString path = InProfile(account, relative);
  return IsFilePath(path.CStr()) ? ReadBytes(path.CStr()) : "(missing)";
}
