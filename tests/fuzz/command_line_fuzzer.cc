// Both readers of a command line take any words.
#include <string>
#include <vector>

#include "arguments.h"
#include "core/command_line.h"
#include "fuzz_machine.h"
#include "machine/names.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzDrive();
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::vector<std::string> words(1);
  for (const char letter : text) {
    if (letter == '\n') {
      words.emplace_back();
    } else if (letter != 0) {
      words.back() += letter;
    }
  }
  ConsoleArguments arguments;
  std::string message;
  const ParseOutcome outcome = ParseArguments(words, arguments, message);
  Require(outcome == ParseOutcome::kRun || !message.empty(), "who isn't served is told why");

  WString pending(L"before");
  ParseCommandLine(machine::AsWide(machine::ToUtf16(text)), pending);
  Require(!pending.IsEmpty(), "the pending path stays as it was where there is no file");
  return 0;
}
