// The commands `users`, `backup` and `info` on the command line.
#include "command_options.h"

namespace {

constexpr char kUsersFooter[] =
    "Examples:\n"
    "  norvanectl users\n"
    "  norvanectl users --json";

constexpr char kBackupFooter[] =
    "Examples:\n"
    "  norvanectl backup --to D:\\Backups\n"
    "      everything of all accounts, into a folder of D:\\Backups named after computer and user\n"
    "  norvanectl backup --to D:\\Backups --name Office --user Anna --user Bob --folders desktop,documents\n"
    "      two folders of two accounts\n"
    "  norvanectl backup --to D:\\Backups --name Office --extra C:\\Projects --update\n"
    "      brings an existing backup up to date and adds a folder\n"
    "  norvanectl backup --to D:\\Backups --dry-run\n"
    "      tells what would be copied and changes nothing";

constexpr char kInfoFooter[] =
    "Examples:\n"
    "  norvanectl info D:\\Backups\\Office\n"
    "  norvanectl info D:\\Backups\\Office\\BackupInfo.grxsv --json";

}  // namespace

void AddUsersCommand(CLI::App& app, ConsoleArguments& arguments) {
  CLI::App& command = AddCommand(app, arguments, ConsoleCommand::kUsers, "users",
                                 "List the local accounts that can be backed up\n", kUsersFooter);
  AddCommonOptions(command, arguments);
}

void AddBackupCommand(CLI::App& app, ConsoleArguments& arguments) {
  CLI::App& command = AddCommand(app, arguments, ConsoleCommand::kBackup, "backup",
                                 "Back up accounts and further folders\n", kBackupFooter);
  command.callback([&arguments, &command] {
    arguments.command = ConsoleCommand::kBackup;
    arguments.hasName = command.count("--name") != 0;
  });
  command
      .add_option("--to", arguments.to,
                  "The folder in which the backup's own folder is made, or an existing backup of that name "
                  "(required)")
      ->option_text("PARENT")
      ->required();
  command
      .add_option("--name", arguments.name,
                  "Name of the backup's folder (default: \"COMPUTER (user)\", with the user at the console)")
      ->option_text("NAME");
  AddRepeated(command, "--user", arguments.users, "NAME",
              "An account to back up; may be given again (default: all accounts)");
  AddFolderList(command, arguments);
  AddRepeated(command, "--extra", arguments.extraFolders, "DIR",
              "A further folder to back up; may be given again (default: none)");
  command.add_flag("--update", arguments.updateOnly,
                   "Copy only new and outdated files; application data is copied whole (default: off)");
  AddSkipChoices(command, arguments);
  AddCommonOptions(command, arguments);
}

void AddInfoCommand(CLI::App& app, ConsoleArguments& arguments) {
  CLI::App& command =
      AddCommand(app, arguments, ConsoleCommand::kInfo, "info", "Show what a backup holds\n", kInfoFooter);
  AddPlace(command, "SET", arguments.set, "The folder of a backup, or its info file (required)");
  AddCommonOptions(command, arguments);
}
