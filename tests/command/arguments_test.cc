#include "arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "console_run.h"
#include "resources/version.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

ConsoleArguments Parsed(const std::vector<std::string>& words) {
  ConsoleArguments arguments;
  std::string text;
  EXPECT_EQ(ParseArguments(words, arguments, text), ParseOutcome::kRun) << text;
  return arguments;
}

TEST(Arguments, BackupHasTheDefaultsOfTheScreen) {
  const ConsoleArguments arguments = Parsed({"backup", "--to", "D:\\B"});
  EXPECT_EQ(arguments.command, ConsoleCommand::kBackup);
  EXPECT_EQ(arguments.to, "D:\\B");
  EXPECT_FALSE(arguments.hasName);
  EXPECT_TRUE(arguments.users.empty());
  EXPECT_EQ(arguments.folders, "all");
  EXPECT_FALSE(arguments.updateOnly || arguments.copiesSystem || arguments.copiesHidden);
  EXPECT_FALSE(arguments.isJson || arguments.isQuiet || arguments.isDryRun);
}

// An option that swallows the next one's value backs up the wrong accounts.
TEST(Arguments, RepeatedOptionsTakeOneValueEach) {
  const ConsoleArguments arguments =
      Parsed({"backup",        "--user", "Anna",    "--extra",   "C:\\a b", "--user=-odd-", "--extra",
              "D:\\ü",         "--to",   "D:",      "--name",    "",        "--update",     "--copy-hidden",
              "--copy-system", "--json", "--quiet", "--dry-run", "--log",   "x.log"});
  EXPECT_THAT(arguments.users, ElementsAre("Anna", "-odd-"));
  EXPECT_THAT(arguments.extraFolders, ElementsAre("C:\\a b", "D:\\ü"));
  EXPECT_TRUE(arguments.hasName);
  EXPECT_EQ(arguments.name, "");
  EXPECT_TRUE(arguments.updateOnly && arguments.copiesSystem && arguments.copiesHidden);
  EXPECT_TRUE(arguments.isJson && arguments.isQuiet && arguments.isDryRun);
  EXPECT_EQ(arguments.log, "x.log");
}

// A script that goes on after a mistyped option thinks that it has a backup.
TEST(Arguments, WrongUsageNamesWhatIsWrong) {
  struct Case {
    std::vector<std::string> words;
    const char* part;
  };
  const Case cases[] = {
      {{}, "No command"},
      {{"bakup"}, "\"bakup\" is no command"},
      {{"backup"}, "--to is required"},
      {{"backup", "--to"}, "--to"},
      {{"backup", "--to", "D:", "--user="}, "--user= has no value"},
      {{"backup", "--to", "D:", "--bogus"}, "--bogus"},
      {{"backup", "--to", "D:", "more"}, "more"},
      {{"backup", "--to", "D:", "/update"}, "/update"},
      {{"info"}, "SET is required"},
      {{"info", "a", "b"}, "b"},
      {{"users", "x\x1b[31m"}, "x\\x1b[31m"},
      {{"--json", "users"}, "\"--json\" is no command"},
      {{"restore"}, "SET is required"},
      {{"restore", "a", "--map"}, "--map"},
      {{"restore", "a", "--map", "x=y", "z"}, "z"},
      {{"restore", "a", "--move"}, "--move"},
      {{"restore", "a", "--copy-hidden"}, "--copy-hidden"},
      {{"restore-from", "a", "--update"}, "--update"},
      {{"copy", "a"}, "TARGET is required"},
      {{"move", "a", "b", "--extra", "c"}, "--extra"},
  };
  for (const Case& c : cases) {
    const ConsoleRun run = Norvanectl(c.words);
    EXPECT_EQ(run.exitCode, 2) << c.part;
    EXPECT_THAT(run.errors, HasSubstr(c.part));
    EXPECT_THAT(run.errors, HasSubstr("--help\""));
    EXPECT_EQ(run.results, "");
  }
}

TEST(Arguments, RestoreHasTheDefaultsOfTheScreen) {
  const ConsoleArguments plain = Parsed({"restore", "D:\\B"});
  EXPECT_EQ(plain.command, ConsoleCommand::kRestore);
  EXPECT_EQ(plain.set, "D:\\B");
  EXPECT_EQ(plain.folders, "all");
  EXPECT_FALSE(plain.overwrites || plain.leavesExtraFolders || plain.moves);
  const ConsoleArguments full =
      Parsed({"restore-from", "--map", "A=B", "--map", "C=D", "E:", "--create", "F=G=H", "--skip", "I",
              "--extra", "J=K", "--no-extra", "--overwrite", "--move", "--copy-hidden"});
  EXPECT_EQ(full.command, ConsoleCommand::kRestoreFrom);
  EXPECT_EQ(full.root, "E:");
  EXPECT_THAT(full.maps, ElementsAre("A=B", "C=D"));
  EXPECT_THAT(full.creates, ElementsAre("F=G=H"));
  EXPECT_THAT(full.skips, ElementsAre("I"));
  EXPECT_THAT(full.extraFolders, ElementsAre("J=K"));
  EXPECT_TRUE(full.overwrites && full.leavesExtraFolders && full.moves && full.copiesHidden);
  const ConsoleArguments move = Parsed({"move", "Anna", "C:\\Data", "--overwrite"});
  EXPECT_EQ(move.command, ConsoleCommand::kMove);
  EXPECT_EQ(move.source + "|" + move.target, "Anna|C:\\Data");
}

// Each option is told with its default, nothing is wider than a terminal of 100 columns, and an example
// stands on one line, so that it can be pasted.
TEST(Arguments, HelpIsComplete) {
  const std::vector<const char*> common = {"--folders LIST", "--dry-run", "--json", "--quiet",
                                           "--log FILE",     "--version", "--help", "Examples:"};
  const std::vector<const char*> restore = {"--map FROM=TO", "--create FROM[=NAME]", "--skip FROM",
                                            "--no-extra",    "--overwrite",          "[=TARGET]"};
  const struct {
    const char* command;
    std::vector<const char*> parts;
    size_t defaults;
  } cases[] = {{"backup",
                {"--to PARENT", "--name NAME", "--user NAME", "--extra DIR", "--update", "--copy-system",
                 "--copy-hidden",
                 "  norvanectl backup --to D:\\Backups --name Office --user Anna --user Bob --folders "
                 "desktop,documents\n"},
                11},
               {"restore", restore, 11},
               {"restore-from", restore, 14},
               {"copy", {"SOURCE", "TARGET", "--overwrite", "--copy-system", "--copy-hidden"}, 8},
               {"move", {"SOURCE", "TARGET", "--overwrite", "--copy-system", "--copy-hidden"}, 8}};
  for (const auto& test : cases) {
    const std::string help = Norvanectl({test.command, "--help"}).results;
    for (const char* part : common) EXPECT_THAT(help, HasSubstr(part)) << test.command;
    for (const char* part : test.parts) EXPECT_THAT(help, HasSubstr(part)) << test.command;
    size_t defaults = 0;
    for (size_t at = help.find("(default:"); at != std::string::npos; at = help.find("(default:", at + 1))
      ++defaults;
    EXPECT_EQ(defaults, test.defaults) << test.command;
    for (size_t start = 0, end = 0; start < help.size(); start = end + 1) {
      end = help.find('\n', start);
      EXPECT_LE(end - start, 100u) << help.substr(start, end - start);
    }
  }
  const std::string all = Norvanectl({"--help"}).results;
  EXPECT_THAT(all, HasSubstr("Exit codes:"));
  EXPECT_THAT(all, testing::Not(HasSubstr(" \n")));
  EXPECT_THAT(Norvanectl({"info", "--help"}).results, HasSubstr("norvanectl info D:"));
  EXPECT_THAT(Norvanectl({"--version"}).results, HasSubstr("norvanectl 3.0.2.0"));
  EXPECT_EQ(Norvanectl({"users", "--version"}).exitCode, 0);
}

}  // namespace
