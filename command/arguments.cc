#include "arguments.h"

#include <algorithm>
#include <iterator>

#include "command_options.h"
#include "utf8_text.h"

namespace {

constexpr char kDescription[] =
    "Backs up, restores, copies and moves the data of local user accounts.\n"
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

constexpr void (*kAddCommands[])(CLI::App&, ConsoleArguments&) = {
    AddUsersCommand,       AddBackupCommand, AddInfoCommand, AddRestoreCommand,
    AddRestoreFromCommand, AddCopyCommand,   AddMoveCommand,
};
constexpr const char* kCommands[] = {"users", "backup", "info", "restore", "restore-from", "copy", "move"};

constexpr size_t kHelpWidth = 96;
constexpr size_t kDescriptionColumn = 30;

// The library writes a description on one line, however long it is, and puts lines of blanks between the
// commands. The footer stays as it is, since its examples are there to be pasted.
std::string HelpText(const CLI::App& app) {
  std::string help = app.help(app.get_parent() ? "norvanectl" : "");
  const std::string footer = app.get_footer();
  help.resize(std::min(help.rfind(footer), help.size()));
  std::string wrapped, line;
  for (size_t start = 0; start < help.size();) {
    const size_t end = std::min(help.find('\n', start), help.size());
    line = help.substr(start, end - start);
    start = end + 1;
    const bool isBlank = line.find_first_not_of(' ') == std::string::npos;
    if (isBlank && (!line.empty() || wrapped.ends_with("\n\n"))) continue;
    while (line.size() > kHelpWidth) {
      const size_t blank = line.rfind(' ', kHelpWidth);
      if (blank == std::string::npos || blank <= kDescriptionColumn) break;
      wrapped += line.substr(0, blank) + "\n";
      line = std::string(kDescriptionColumn, ' ') + line.substr(blank + 1);
    }
    wrapped += line + "\n";
  }
  return wrapped + footer;
}

bool IsCommand(const std::string& word) {
  return std::find(std::begin(kCommands), std::end(kCommands), word) != std::end(kCommands);
}

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
  for (const auto addCommand : kAddCommands) addCommand(app, arguments);
  try {
    std::vector<std::string> reversed(words.rbegin(), words.rend());
    app.parse(std::move(reversed));
    return ParseOutcome::kRun;
  } catch (const CLI::CallForHelp&) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    text = HelpText(chosen.empty() ? app : *chosen[0]);
    return ParseOutcome::kShown;
  } catch (const CLI::CallForVersion&) {
    text = VersionLine();
    return ParseOutcome::kShown;
  } catch (const CLI::ParseError& error) {
    text = Sentence(error.what(), words);
    return ParseOutcome::kWrong;
  }
}
