// windows_main.cc
//
// The entry of norvanectl.exe. The console's code page is left alone: a terminal gets UTF-16, and a file
// or a pipe gets UTF-8.
#include <string>
#include <vector>

#include "console.h"
#include "utf8_text.h"

int wmain(int count, wchar_t** arguments) {
  std::vector<std::string> texts;
  for (int index = 0; index < count; ++index) texts.push_back(ToUtf8Text(arguments[index]));
  std::vector<const char*> pointers;
  for (const std::string& text : texts) pointers.push_back(text.c_str());
  return NorvaneConsoleMain(static_cast<int>(pointers.size()), pointers.data());
}
