#include "plan_problem.h"

#include <utility>

#include "utf8_text.h"

namespace {

constexpr int32_t kLongestShown = 1000;

}  // namespace

bool Object(PlanProblem& problem, std::string sentence, ExitCode exitCode) {
  problem.exitCode = exitCode;
  problem.sentence = std::move(sentence);
  return false;
}

std::string Quoted(const wchar_t* text) {
  WString shown(text);
  if (shown.Length() > kLongestShown) {
    shown.Truncate(kLongestShown);
    shown.Append(L"...");
  }
  return "\"" + Escaped(shown) + "\"";
}
