#include "command_options.h"

#include "core/app_object.h"
#include "utf8_text.h"

std::string VersionLine() { return "norvanectl " + ToUtf8Text(kVersionText); }

CLI::App& AddCommand(CLI::App& app, ConsoleArguments& arguments, ConsoleCommand command, const char* name,
                     const char* description, const char* footer) {
  CLI::App& added = *app.add_subcommand(name, description);
  added.footer(footer);
  added.callback([&arguments, command] { arguments.command = command; });
  return added;
}

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

void AddFolderList(CLI::App& command, ConsoleArguments& arguments) {
  command
      .add_option("--folders", arguments.folders,
                  "Which folders of the accounts, separated by commas: appdata, desktop, documents, "
                  "downloads, music, pictures, videos, other, or all (default: all)")
      ->option_text("LIST");
}

void AddSkipChoices(CLI::App& command, ConsoleArguments& arguments) {
  command.add_flag("--copy-system", arguments.copiesSystem,
                   "Copy files with the system attribute, too (default: they are skipped)");
  command.add_flag("--copy-hidden", arguments.copiesHidden,
                   "Copy files with the hidden attribute, too (default: they are skipped)");
}

void AddPlace(CLI::App& command, const char* name, std::string& value, const char* description) {
  command.add_option(name, value, description)->option_text(" ")->required();
}

void AddRepeated(CLI::App& command, const char* name, std::vector<std::string>& values, const char* form,
                 const char* description) {
  command.add_option(name, values, description)->option_text(form)->allow_extra_args(false);
}
