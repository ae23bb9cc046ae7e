// command_line.cc
#include <windows.h>
#include <shellapi.h>

#include <algorithm>
#include <string>
#include <vector>

#include "machine/call.h"
#include "machine/machine.h"
#include "machine/names.h"

using namespace machine;

namespace {

bool IsBlank(char16_t unit) { return unit == u' ' || unit == u'\t'; }

// The program's name: up to the second quote if it begins with one, otherwise up to the first blank, and
// a backslash means nothing. Gives the place behind it.
size_t TakeProgram(std::u16string_view line, std::u16string& name) {
  if (line[0] == u'"') {
    size_t end = std::min(line.find(u'"', 1), line.size());
    name = line.substr(1, end - 1);
    return std::min(end + 1, line.size());
  }
  size_t end = static_cast<size_t>(
      std::find_if(line.begin(), line.end(), [](char16_t unit) { return unit <= u' '; }) - line.begin());
  name = line.substr(0, end);
  return std::min(end + 1, line.size());
}

// One argument. Backslashes count only in front of a quote: two stand for one there, and one that is left
// makes the quote a plain character. Of quotes in a row, the one that opens counted in, each third is a
// plain character.
size_t TakeArgument(std::u16string_view line, size_t at, std::u16string& argument) {
  size_t quotes = 0;
  while (at < line.size() && (quotes != 0 || !IsBlank(line[at]))) {
    size_t backslashes = std::min(line.find_first_not_of(u'\\', at), line.size()) - at;
    at += backslashes;
    if (at == line.size() || line[at] != u'"') {
      argument.append(backslashes, u'\\');
      if (backslashes == 0) argument += line[at++];
      continue;
    }
    argument.append(backslashes / 2, u'\\');
    ++at;
    if (backslashes % 2 != 0) {
      argument += u'"';
    } else {
      ++quotes;
    }
    for (; at < line.size() && line[at] == u'"'; ++at) {
      if (++quotes == 3) {
        argument += u'"';
        quotes = 0;
      }
    }
    if (quotes == 2) quotes = 0;
  }
  return at;
}

std::vector<std::u16string> SplitLine(std::u16string_view line) {
  std::vector<std::u16string> arguments(1);
  size_t at = TakeProgram(line, arguments[0]);
  for (;;) {
    while (at < line.size() && IsBlank(line[at])) ++at;
    if (at == line.size()) return arguments;
    at = TakeArgument(line, at, arguments.emplace_back());
  }
}

}  // namespace

wchar_t** WINAPI CommandLineToArgvW(const wchar_t* commandLine, int* count) {
  EnterCall();
  if (!count) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  std::u16string_view line = reinterpret_cast<const char16_t*>(commandLine);
  std::vector<std::u16string> arguments =
      line.empty() ? std::vector{ToUtf16(ThisMachine().settings.programPath)} : SplitLine(line);
  size_t units = 0;
  for (const auto& argument : arguments) units += argument.size() + 1;
  // One block that holds the pointers and the texts, which the caller frees.
  size_t pointers = (arguments.size() + 1) * sizeof(wchar_t*);
  void* block = LocalAlloc(0, pointers + units * sizeof(wchar_t));
  if (!block) return nullptr;
  auto** result = static_cast<wchar_t**>(block);
  auto* text = reinterpret_cast<wchar_t*>(static_cast<char*>(block) + pointers);
  for (size_t i = 0; i < arguments.size(); ++i) {
    result[i] = text;
    text = std::copy_n(AsWide(arguments[i]), arguments[i].size() + 1, text);
  }
  result[arguments.size()] = nullptr;
  *count = static_cast<int>(arguments.size());
  return result;
}
