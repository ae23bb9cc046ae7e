// norvane_machine_main.cc
//
// norvane-machine: makes machine folders, and shows and changes what is in them.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

#include "machine/attach_machine.h"
#include "machine/create_machine.h"
#include "machine/sample_machine.h"
#include "machine/show_machine.h"
#include "machine/text_output.h"

namespace {

using namespace machine;

constexpr int kWrongUsage = 2, kFailed = 4;

int Complain(int code, const std::string& text) {
  fprintf(stderr, "norvane-machine: %s\n", text.c_str());
  return code;
}

// Opens a machine and acts on it as the system itself, whom no access list keeps out.
bool UseAsSystem(const std::string& folder, std::string* error) {
  Machine opened;
  if (!Machine::Open(folder, opened, error)) return false;
  opened.settings.runAs = "SYSTEM";
  UseMachine(std::move(opened));
  return true;
}

struct CreateArguments {
  std::string folder, version = "10.0.19045", computer = "NORVANE-PC", console, runAs, timeZone, drives;
  std::vector<std::string> accounts;
};

int Create(const CreateArguments& given) {
  MachinePlan plan;
  std::string error;
  if (!ParseMachineVersion(given.version, plan, &error)) return Complain(kWrongUsage, error);
  for (const std::string& text : given.accounts) {
    AccountPlan account;
    if (!ParseAccountPlan(text, account, &error)) return Complain(kWrongUsage, error);
    plan.accounts.push_back(account);
  }
  for (const char letter : given.drives) {
    if (letter < 'D' || letter > 'Z') {
      return Complain(kWrongUsage,
                      "\"" + given.drives + "\" isn't a row of drive letters from D to Z, such as DE.");
    }
  }
  plan.computerName = given.computer;
  plan.consoleAccount = given.console;
  plan.runAs = given.runAs;
  plan.timeZone = given.timeZone;
  plan.moreDrives = given.drives;
  if (!CreateMachine(given.folder, plan, &error)) return Complain(kFailed, error);
  printf("Made the machine %s in %s.\n", plan.computerName.c_str(), given.folder.c_str());
  return 0;
}

int Sample(const std::string& folder) {
  SampleSummary summary;
  std::string error;
  if (!MakeSampleMachine(folder, summary, &error)) return Complain(kFailed, error);
  printf("Made a sample machine in %s: 3 accounts, %s files, %s.\n", folder.c_str(),
         Grouped(summary.files).c_str(), Amount(summary.bytes).c_str());
  return 0;
}

int Attach(const std::string& folder, const std::vector<std::string>& drives, AttachPlan plan) {
  std::string error;
  std::vector<std::string> warnings;
  for (const std::string& text : drives) {
    if (!ParseAttachedDrive(text, plan, &error)) return Complain(kWrongUsage, error);
  }
  const bool done = AttachMachine(folder, plan, warnings, &error);
  for (const std::string& warning : warnings) fprintf(stderr, "norvane-machine: %s\n", warning.c_str());
  if (!done) return Complain(kFailed, error);
  ShowMachine(stdout);
  return 0;
}

int Show(const std::string& folder) {
  std::string error;
  Machine opened;
  if (!Machine::Open(folder, opened, &error)) return Complain(kFailed, error);
  UseMachine(std::move(opened));
  ShowMachine(stdout);
  return 0;
}

int Registry(const std::string& folder, const std::string& key) {
  std::string error;
  if (!UseAsSystem(folder, &error)) return Complain(kFailed, error);
  return ShowKey(key, stdout, &error) ? 0 : Complain(kFailed, error);
}

int Attributes(const std::string& folder, const std::string& path, const std::vector<std::string>& changes) {
  std::string error;
  if (!UseAsSystem(folder, &error)) return Complain(kFailed, error);
  return ShowAttributes(path, changes, stdout, &error) ? 0 : Complain(kFailed, error);
}

// "+R" and "-H" would be taken for options, so they are taken out first.
std::vector<std::string> TakeChanges(std::vector<std::string>& arguments) {
  std::vector<std::string> changes;
  if (arguments.empty() || arguments[0] != "attrib") return changes;
  const auto isChange = [](const std::string& text) {
    return text.size() > 1 && (text[0] == '+' || text[0] == '-') && text != "-h" &&
           text.find_first_not_of("RHSArhsa", 1) == std::string::npos;
  };
  for (const std::string& text : arguments) {
    if (isChange(text)) changes.push_back(text);
  }
  std::erase_if(arguments, isChange);
  return changes;
}

// What the command line gives, of all commands together.
struct Arguments {
  std::string folder, key, path;
  CreateArguments create;
  AttachPlan attach;
  std::vector<std::string> drives;
};

CLI::App* AddCommand(CLI::App& app, const char* name, const char* text, const char* example,
                     Arguments& given) {
  CLI::App* command = app.add_subcommand(name, text);
  command->add_option("DIR", given.folder, "The machine folder")->required();
  command->footer(std::string("Example:\n  ") + example);
  return command;
}

void AddCreate(CLI::App& app, Arguments& given) {
  CLI::App* command =
      AddCommand(app, "create", "Make a machine with accounts and nothing in them",
                 "norvane-machine create /tmp/pc --version 10.0.22631 --account "
                 "Anna:administrator --account Bob --account Eve:guest --console Anna --drives D",
                 given);
  CreateArguments& create = given.create;
  command->add_option("--version", create.version, "Version of Windows: major.minor.build")
      ->capture_default_str();
  command
      ->add_option("--account", create.accounts,
                   "An account: name[:type[:full name]], the type being guest, standard (the default) or "
                   "administrator; may be given again and again")
      ->take_all()
      ->expected(1);
  command->add_option("--console", create.console, "The account that sits at the console (nobody)");
  command->add_option("--run-as", create.runAs,
                      "The account that the program runs as (who sits at the console)");
  command->add_option("--computer", create.computer, "Name of the computer")->capture_default_str();
  command->add_option("--drives", create.drives, "Letters of drives beside C, such as DE (none)");
  command->add_option("--time-zone", create.timeZone, "Such as Europe/Berlin (UTC)");
}

void AddAttach(CLI::App& app, Arguments& given) {
  CLI::App* command =
      AddCommand(app, "attach", "Make a machine around a Windows disk that is mounted or was copied",
                 "norvane-machine attach /tmp/rescue C=/mnt/disk E=/media/usb", given);
  command->add_option("DRIVES", given.drives, "Letters with folders, such as C=/mnt/disk D=/mnt/other")
      ->required();
  command->add_flag("--writable", given.attach.isWritable,
                    "Let norvanectl change the drive of the Windows, too (it is read only)");
  command->add_option("--read-only", given.attach.readOnlyDrives,
                      "Letters of further drives that stay as they are (none)");
  command->add_option("--time-zone", given.attach.timeZone, "Such as Europe/Berlin (UTC)");
}

void AddLookers(CLI::App& app, Arguments& given) {
  AddCommand(app, "sample", "Make a machine with three accounts and a few thousand files",
             "norvane-machine sample /tmp/pc", given);
  AddCommand(app, "show", "List settings, drives, accounts and processes", "norvane-machine show /tmp/pc",
             given);
  AddCommand(
      app, "attrib",
      "Show the attributes of a file, or set them by +R -R +H -H +S -S +A -A behind its path (read-only, "
      "hidden, system, archive)",
      "norvane-machine attrib /tmp/pc 'C:\\Users\\Anna\\a.txt' +R -H", given)
      ->add_option("PATH", given.path, "A Windows path on the machine")
      ->required();
  AddCommand(
      app, "reg", "List a key of the registry",
      "norvane-machine reg /tmp/pc 'HKLM64\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList'",
      given)
      ->add_option("KEY", given.key,
                   "Such as HKLM64\\SOFTWARE, or HKU\\Bob for an account that isn't logged on")
      ->required();
}

int Run(const std::string& command, Arguments& given, const std::vector<std::string>& changes) {
  given.create.folder = given.folder;
  if (command == "create") return Create(given.create);
  if (command == "sample") return Sample(given.folder);
  if (command == "show") return Show(given.folder);
  if (command == "attrib") return Attributes(given.folder, given.path, changes);
  if (command == "reg") return Registry(given.folder, given.key);
  return Attach(given.folder, given.drives, given.attach);
}

}  // namespace

int main(int count, char** texts) {
  CLI::App app(
      "Makes machine folders for norvanectl (a Windows machine in a folder), and shows what is in them.",
      "norvane-machine");
  app.require_subcommand(1);
  app.footer(
      "Examples:\n"
      "  norvane-machine sample /tmp/pc\n"
      "  norvane-machine create /tmp/pc --account \"Anna:administrator:Anna Berg\" --account Bob --console "
      "Anna\n"
      "  norvane-machine attach /tmp/rescue C=/mnt/disk\n"
      "  norvanectl --machine /tmp/pc users\n\n"
      "\"norvane-machine COMMAND --help\" tells more about a command.");
  Arguments given;
  AddCreate(app, given);
  AddLookers(app, given);
  AddAttach(app, given);

  std::vector<std::string> arguments(texts + 1, texts + count);
  const std::vector<std::string> changes = TakeChanges(arguments);
  std::reverse(arguments.begin(), arguments.end());
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kWrongUsage;
  }
  const int code = Run(app.get_subcommands().front()->get_name(), given, changes);
  if (HasMachine()) LeaveMachine();
  return code;
}
