// The commands `restore`, `restore-from`, `copy` and `move` on the command line.
#include "command_options.h"

namespace {

constexpr char kRestoreFooter[] =
    "Each account goes to the local account of its name, otherwise to the one of its full name. Where\n"
    "there is neither, an account is made, without a password.\n"
    "\n"
    "Examples:\n"
    "  norvanectl restore D:\\Backups\\Office --dry-run\n"
    "      tells which account goes where and how much it is, and changes nothing\n"
    "  norvanectl restore D:\\Backups\\Office\n"
    "      all accounts, all folders, all additional folders; files that are there already stay\n"
    "  norvanectl restore D:\\Backups\\Office --map Anna=Anna2 --create Bob=Robert --skip Eve\n"
    "      Anna's data to the account Anna2, Bob's to a new account, and none of Eve's\n"
    "  norvanectl restore D:\\Backups\\Office --no-extra --extra C:\\Projects=D:\\Projects\n"
    "      of the additional folders only one, and that to another place";

constexpr char kRestoreFromFooter[] =
    "Each account's folder below ROOT goes to the local account of its name; where there is none, an\n"
    "account is made, without a password.\n"
    "\n"
    "Examples:\n"
    "  norvanectl restore-from E:\n"
    "      the accounts of the Windows on an attached disk\n"
    "  norvanectl restore-from C:\\Windows.old --move\n"
    "      what an upgrade set aside, moved instead of copied\n"
    "  norvanectl restore-from E: --map Anna=Anna2 --extra Data\\Work --extra Music=D:\\Music\n"
    "      E:\\Data\\Work comes to C:\\Data\\Work (on the system's drive), and E:\\Music to D:\\Music";

constexpr char kCopyFooter[] =
    "Examples:\n"
    "  norvanectl copy Anna Bob --folders desktop,documents\n"
    "      from one account's profile to another's\n"
    "  norvanectl copy C:\\Data D:\\Data --overwrite\n"
    "      any folder; files that are there already are replaced";

constexpr char kMoveFooter[] =
    "Examples:\n"
    "  norvanectl move Anna Bob\n"
    "      from one account's profile to another's on the same drive\n"
    "  norvanectl move C:\\Data C:\\Archive\\Data --copy-hidden --copy-system\n"
    "      any folder, with its hidden and system files";

constexpr char kLocation[] = "or the name of a local account, for its profile (required)";

// What both restores have.
void AddRestoreOptions(CLI::App& command, ConsoleArguments& arguments, const char* extraForm,
                       const char* extra) {
  AddRepeated(command, "--map", arguments.maps, "FROM=TO",
              "The account FROM goes to the local account TO; may be given again (default: by name)");
  AddRepeated(command, "--create", arguments.creates, "FROM[=NAME]",
              "A new account NAME, or FROM, is made for the account FROM, of the type that it had; may be "
              "given again (default: where no local account fits)");
  AddRepeated(command, "--skip", arguments.skips, "FROM",
              "The account FROM isn't restored; may be given again (default: all accounts are)");
  AddFolderList(command, arguments);
  AddRepeated(command, "--extra", arguments.extraFolders, extraForm, extra);
  command.add_flag("--no-extra", arguments.leavesExtraFolders,
                   "Restore no additional folders but those that --extra names (default: all)");
  command.add_flag("--overwrite", arguments.overwrites,
                   "Replace files that are there already (default: only missing files are restored)");
}

void AddCopyOrMove(CLI::App& command, ConsoleArguments& arguments) {
  AddPlace(command, "SOURCE", arguments.source, (std::string("A folder, ") + kLocation).c_str());
  AddPlace(command, "TARGET", arguments.target,
           (std::string("The folder that takes what SOURCE holds, ") + kLocation).c_str());
  AddFolderList(command, arguments);
  command.add_flag("--overwrite", arguments.overwrites,
                   "Replace files that are there already (default: they stay, and so do their sources)");
  AddSkipChoices(command, arguments);
  AddCommonOptions(command, arguments);
}

}  // namespace

void AddRestoreCommand(CLI::App& app, ConsoleArguments& arguments) {
  CLI::App& command = AddCommand(app, arguments, ConsoleCommand::kRestore, "restore",
                                 "Restore a backup to accounts of this machine\n", kRestoreFooter);
  AddPlace(command, "SET", arguments.set, "The folder of a backup, or its info file (required)");
  AddRestoreOptions(command, arguments, "PATH[=TARGET]",
                    "The additional folder PATH, as \"norvanectl info\" shows it, goes to TARGET, or back to "
                    "its place; may be given again (default: all, back to their places)");
  AddCommonOptions(command, arguments);
}

void AddRestoreFromCommand(CLI::App& app, ConsoleArguments& arguments) {
  CLI::App& command =
      AddCommand(app, arguments, ConsoleCommand::kRestoreFrom, "restore-from",
                 "Restore accounts from another Windows, such as an attached disk\n", kRestoreFromFooter);
  AddPlace(command, "ROOT", arguments.root, "The folder that holds the other Windows (required)");
  AddRestoreOptions(command, arguments, "RELATIVE[=TARGET]",
                    "A further folder below ROOT goes to TARGET, or to the same place on the system's drive; "
                    "may be given again (default: those of the last run from this ROOT)");
  command.add_flag("--move", arguments.moves,
                   "Move files instead of copying them; only within one drive (default: off)");
  AddSkipChoices(command, arguments);
  AddCommonOptions(command, arguments);
}

void AddCopyCommand(CLI::App& app, ConsoleArguments& arguments) {
  AddCopyOrMove(AddCommand(app, arguments, ConsoleCommand::kCopy, "copy",
                           "Copy one account's profile to another, or any folder\n", kCopyFooter),
                arguments);
}

void AddMoveCommand(CLI::App& app, ConsoleArguments& arguments) {
  AddCopyOrMove(
      AddCommand(app, arguments, ConsoleCommand::kMove, "move",
                 "Move one account's profile to another, or any folder, within one drive\n", kMoveFooter),
      arguments);
}
