#include "refusal.h"

#include "interrupt.h"
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

bool RefuseIfStopped(const ConsoleArguments& arguments, ConsoleOutput& output) {
  if (!InterruptGuard::IsRequested()) return false;
  Refuse(arguments, "Stopped before anything was made.", output, kExitStopped);
  return true;
}
