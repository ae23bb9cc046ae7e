#include "refusal.h"

#include "json_line.h"

ExitCode Refuse(const ConsoleArguments& arguments, const std::string& sentence, ConsoleOutput& output,
                ExitCode exitCode) {
  if (arguments.isJson) {
    output.Result(JsonLine("end")
                      .Utf8("outcome", exitCode == kExitStopped ? "stopped" : "not started")
                      .Utf8("text", sentence)
                      .Build());
  }
  output.Error("norvanectl: " + sentence);
  return exitCode;
}
