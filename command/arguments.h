// arguments.h
//
// The command line of norvanectl.
#pragma once
#include <string>
#include <vector>

enum class ConsoleCommand { kUsers, kBackup, kInfo, kRestore, kRestoreFrom, kCopy, kMove };

// Texts are UTF-8 as they were given.
struct ConsoleArguments {
  ConsoleCommand command = ConsoleCommand::kUsers;

  // Common to all commands.
  bool isDryRun = false;
  bool isJson = false;
  bool isQuiet = false;
  std::string log;  // empty: the log beside the program

  // Common to all that copies.
  std::string folders = "all";
  std::vector<std::string> extraFolders;  // for a restore, with "=" and a target behind it
  bool copiesSystem = false;
  bool copiesHidden = false;
  bool overwrites = false;  // all but the backup: also files that are there already

  // backup
  std::string to;
  std::string name;
  bool hasName = false;
  std::vector<std::string> users;  // empty: all
  bool updateOnly = false;

  // info, restore
  std::string set;

  // restore, restore-from
  std::string root;  // of restore-from
  std::vector<std::string> maps, creates, skips;
  bool leavesExtraFolders = false;
  bool moves = false;  // restore-from

  // copy, move
  std::string source, target;
};

enum class ParseOutcome {
  kRun,    // the arguments name a command to run
  kShown,  // help or version were asked for; `text` goes to standard output
  kWrong,  // `text` is a sentence that says what is wrong
};

// `words` are the arguments without the program's name.
ParseOutcome ParseArguments(const std::vector<std::string>& words, ConsoleArguments& arguments,
                            std::string& text);
