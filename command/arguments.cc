#include "arguments.h"

#include <CLI/CLI.hpp>

#include <algorithm>

#include "core/app_object.h"
#include "utf8_text.h"

namespace {

constexpr char kDescription[] =
    "Backs up the data of local user accounts.\n"
    "\n"
    "A backup is an ordinary folder with an info file at its top. Accounts are named as Windows names\n"
    "them. Results go to standard output, progress and errors to standard error.\n";

constexpr char kFooter[] =
    "Exit codes:\n"
    "  0  everything that was asked for is done\n"
    "  1  done, but items failed; each is in the log and on standard error\n"
    "  2  wrong usage\n"
    "  3  stopped by the user (Ctrl+C)\n"
    "  4  it couldn't start or couldn't do anything\n"
    "\n"
    "\"norvanectl COMMAND --help\" tells more about a command.";

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

std::string VersionLine() { return "norvanectl " + ToUtf8Text(kVersionText); }

void AddCommonOptions(CLI::App& command, ConsoleArguments& arguments) {
  const char* const group = "Common options";
  command
      .add_flag("--dry-run", arguments.isDryRun, "Tell what would be done and change nothing (default: off)")
      ->group(group);
  command.add_flag("--json", arguments.isJson, "One JSON object a line on standard output (default: text)")
      ->group(group);
  command
      .add_flag("--quiet", arguments.isQuiet,
                "No progress, no notes and no closing text; errors are shown (default: off)")
      ->group(group);
  command
      .add_option("--log", arguments.log,
                  "The file that takes the log's entries (default: Norvane.log beside the program)")
      ->option_text("FILE")
      ->group(group);
  command.set_version_flag("--version", VersionLine, "Show the program's version")->group(group);
  command.set_help_flag("--help", "Show this text")->group(group);
}

void AddUsers(CLI::App& app, ConsoleArguments& arguments) {
  CLI::App* command = app.add_subcommand("users", "List the local accounts that can be backed up\n");
  command->footer(kUsersFooter);
  command->callback([&arguments] { arguments.command = ConsoleCommand::kUsers; });
  AddCommonOptions(*command, arguments);
}

void AddBackup(CLI::App& app, ConsoleArguments& arguments) {
  CLI::App* command = app.add_subcommand("backup", "Back up accounts and further folders\n");
  command->footer(kBackupFooter);
  command->callback([&arguments, command] {
    arguments.command = ConsoleCommand::kBackup;
    arguments.hasName = command->count("--name") != 0;
  });
  command
      ->add_option("--to", arguments.to,
                   "The folder in which the backup's own folder is made, or an existing backup of that name "
                   "(required)")
      ->option_text("PARENT")
      ->required();
  command
      ->add_option("--name", arguments.name,
                   "Name of the backup's folder (default: \"COMPUTER (user)\", with the user at the console)")
      ->option_text("NAME");
  command
      ->add_option("--user", arguments.users,
                   "An account to back up; may be given again (default: all accounts)")
      ->option_text("NAME")
      ->allow_extra_args(false);
  command
      ->add_option("--folders", arguments.folders,
                   "Which folders of the accounts, separated by commas: appdata, desktop, documents, "
                   "downloads, music, pictures, videos, other, or all (default: all)")
      ->option_text("LIST");
  command
      ->add_option("--extra", arguments.extraFolders,
                   "A further folder to back up; may be given again (default: none)")
      ->option_text("DIR")
      ->allow_extra_args(false);
  command->add_flag("--update", arguments.updateOnly,
                    "Copy only new and outdated files; application data is copied whole (default: off)");
  command->add_flag("--copy-system", arguments.copiesSystem,
                    "Copy files with the system attribute, too (default: they are skipped)");
  command->add_flag("--copy-hidden", arguments.copiesHidden,
                    "Copy files with the hidden attribute, too (default: they are skipped)");
  AddCommonOptions(*command, arguments);
}

void AddInfo(CLI::App& app, ConsoleArguments& arguments) {
  CLI::App* command = app.add_subcommand("info", "Show what a backup holds\n");
  command->footer(kInfoFooter);
  command->callback([&arguments] { arguments.command = ConsoleCommand::kInfo; });
  command->add_option("SET", arguments.set, "The folder of a backup, or its info file (required)")
      ->option_text(" ")
      ->required();
  AddCommonOptions(*command, arguments);
}

constexpr size_t kHelpWidth = 96;
constexpr size_t kDescriptionColumn = 30;

// The library writes a description on one line, however long it is.
std::string Wrapped(const std::string& help) {
  std::string wrapped, line;
  for (size_t start = 0; start < help.size();) {
    const size_t end = std::min(help.find('\n', start), help.size());
    line = help.substr(start, end - start);
    while (line.size() > kHelpWidth) {
      const size_t blank = line.rfind(' ', kHelpWidth);
      if (blank == std::string::npos || blank <= kDescriptionColumn) break;
      wrapped += line.substr(0, blank) + "\n";
      line = std::string(kDescriptionColumn, ' ') + line.substr(blank + 1);
    }
    wrapped += line + "\n";
    start = end + 1;
  }
  while (!wrapped.empty() && wrapped.back() == '\n') wrapped.pop_back();
  return wrapped;
}

bool IsCommand(const std::string& word) { return word == "users" || word == "backup" || word == "info"; }

// What the library would take for something else.
std::string FindMisuse(const std::vector<std::string>& words) {
  if (words.empty()) return "No command is given";
  if (!IsCommand(words[0]) && words[0] != "--help" && words[0] != "--version") {
    return "\"" + words[0] + "\" is no command";
  }
  for (const std::string& word : words) {
    if (word.rfind("--", 0) == 0 && word.size() > 2 && word.back() == '=') return word + " has no value";
  }
  return std::string();
}

std::string Sentence(const std::string& problem, const std::vector<std::string>& words) {
  std::string help = "norvanectl --help";
  if (!words.empty() && IsCommand(words[0])) help = "norvanectl " + words[0] + " --help";
  return "norvanectl: " + Escaped(problem) + ". \"" + help + "\" shows what can be given.";
}

}  // namespace

ParseOutcome ParseArguments(const std::vector<std::string>& words, ConsoleArguments& arguments,
                            std::string& text) {
  const std::string misuse = FindMisuse(words);
  if (!misuse.empty()) {
    text = Sentence(misuse, words);
    return ParseOutcome::kWrong;
  }
  CLI::App app(kDescription, "norvanectl");
  app.allow_windows_style_options(false);
  app.footer(kFooter);
  app.require_subcommand(1);
  app.get_formatter()->column_width(30);
  app.set_version_flag("--version", VersionLine, "Show the program's version");
  app.set_help_flag("--help", "Show this text");
  AddUsers(app, arguments);
  AddBackup(app, arguments);
  AddInfo(app, arguments);
  try {
    std::vector<std::string> reversed(words.rbegin(), words.rend());
    app.parse(std::move(reversed));
    return ParseOutcome::kRun;
  } catch (const CLI::CallForHelp&) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    text = Wrapped(chosen.empty() ? app.help() : chosen[0]->help("norvanectl"));
    return ParseOutcome::kShown;
  } catch (const CLI::CallForVersion&) {
    text = VersionLine();
    return ParseOutcome::kShown;
  } catch (const CLI::ParseError& error) {
    text = Sentence(error.what(), words);
    return ParseOutcome::kWrong;
  }
}
