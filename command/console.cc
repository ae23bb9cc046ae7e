#include "console.h"

#include "arguments.h"
#include "backup_command.h"
#include "copy_move_command.h"
#include "core/log_file.h"
#include "info_command.h"
#include "interrupt.h"
#include "missing_privileges.h"
#include "operations/path_queries.h"
#include "refusal.h"
#include "restore_command.h"
#include "run_console.h"
#include "users/user_hives.h"
#include "users_command.h"
#include "utf8_text.h"

namespace {

// A hive that stays loaded spoils the account's next logon, so no way out passes this by.
struct OwnHives {
  ConsoleOutput& output;

  ~OwnHives() {
    for (const UserHive& hive : UnloadOwnHives()) {
      output.Error(
          "Note: the registry hive of the profile \"" + Escaped(hive.profile) + "\" (HKEY_USERS\\" +
          Escaped(hive.sid) +
          ") could not be unloaded, so the account's next logon may get a temporary profile; restart "
          "the computer before that logon.");
    }
  }
};

// Where the entries of the log go. False if they can't.
bool ChooseLog(const ConsoleArguments& arguments, AppObject& app, ConsoleOutput& output) {
  if (arguments.isDryRun) {
    app.logPath.Clear();
    return true;
  }
  if (arguments.log.empty()) return true;
  app.logPath = CleanPath(FromUtf8Text(arguments.log).CStr());
  if (IsFolderPath(app.logPath.CStr())) {
    Refuse(arguments, "The log \"" + Escaped(app.logPath) + "\" is a folder; give a file with --log.",
           output);
    return false;
  }
  // A slip of the finger must not cost a file.
  if (IsOtherThanLog(app.logPath.CStr())) {
    Refuse(arguments,
           "The file \"" + Escaped(app.logPath) +
               "\" is no log of this program and would be spoiled; give a new file with --log.",
           output);
    return false;
  }
  return true;
}

ExitCode RunCommand(const ConsoleArguments& arguments, AppObject& app, ConsoleOutput& output) {
  switch (arguments.command) {
    case ConsoleCommand::kUsers:
      return RunUsersCommand(arguments, app, output);
    case ConsoleCommand::kBackup:
      return RunBackupCommand(arguments, app, output);
    case ConsoleCommand::kInfo:
      return RunInfoCommand(arguments, output);
    case ConsoleCommand::kRestore:
    case ConsoleCommand::kRestoreFrom:
      return RunRestoreCommand(arguments, app, output);
    case ConsoleCommand::kCopy:
    case ConsoleCommand::kMove:
      return RunCopyMoveCommand(arguments, app, output);
  }
  return kExitUsage;
}

ExitCode RunWithAccounts(const ConsoleArguments& arguments, ConsoleOutput& output) {
  const OwnHives hives{output};
  AppObject app;
  app.PrepareRun(GetModuleHandleW(nullptr), L"", false);
  if (!ChooseLog(arguments, app, output)) return kExitNothingDone;
  const std::string missing = MissingPrivilegesSentence();
  if (!missing.empty() && !arguments.isQuiet) output.Error(missing);
  return RunCommand(arguments, app, output);
}

}  // namespace

int RunConsole(const std::vector<std::string>& words, ConsoleOutput& output) {
  ConsoleArguments arguments;
  std::string text;
  switch (ParseArguments(words, arguments, text)) {
    case ParseOutcome::kRun:
      break;
    case ParseOutcome::kShown:
      output.Result(text);
      return kExitDone;
    case ParseOutcome::kWrong:
      output.Error(text);
      return kExitUsage;
  }
  const InterruptGuard guard;
  return arguments.command == ConsoleCommand::kInfo ? RunInfoCommand(arguments, output)
                                                    : RunWithAccounts(arguments, output);
}

extern "C" int NorvaneConsoleMain(int count, const char* const* arguments) {
  ConsoleOutput output;
  return RunConsole(std::vector<std::string>(arguments + (count > 0 ? 1 : 0), arguments + count), output);
}
