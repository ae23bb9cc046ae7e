#include "arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "console_run.h"

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
  };
  for (const Case& c : cases) {
    const ConsoleRun run = Norvanectl(c.words);
    EXPECT_EQ(run.exitCode, 2) << c.part;
    EXPECT_THAT(run.errors, HasSubstr(c.part));
    EXPECT_THAT(run.errors, HasSubstr("--help\""));
    EXPECT_EQ(run.results, "");
  }
}

// Each option is told with its default, and nothing is wider than a terminal of 100 columns.
TEST(Arguments, HelpIsComplete) {
  const ConsoleRun run = Norvanectl({"backup", "--help"});
  EXPECT_EQ(run.exitCode, 0);
  for (const char* part : {"--to PARENT", "--name NAME", "--user NAME", "--folders LIST", "--extra DIR",
                           "--update", "--copy-system", "--copy-hidden", "--dry-run", "--json", "--quiet",
                           "--log FILE", "--version", "--help", "Examples:", "norvanectl backup --to"}) {
    EXPECT_THAT(run.results, HasSubstr(part));
  }
  size_t defaults = 0, widest = 0;
  for (size_t at = run.results.find("(default:"); at != std::string::npos;
       at = run.results.find("(default:", at + 1)) {
    ++defaults;
  }
  EXPECT_EQ(defaults, 11u);
  for (size_t start = 0; start < run.results.size();) {
    const size_t end = run.results.find('\n', start);
    widest = std::max(widest, end - start);
    start = end + 1;
  }
  EXPECT_LE(widest, 100u);
  EXPECT_THAT(Norvanectl({"--help"}).results, HasSubstr("Exit codes:"));
  EXPECT_THAT(Norvanectl({"info", "--help"}).results, HasSubstr("norvanectl info D:"));
  EXPECT_THAT(Norvanectl({"--version"}).results, HasSubstr("norvanectl 3.0.2.0"));
  EXPECT_EQ(Norvanectl({"users", "--version"}).exitCode, 0);
}

}  // namespace
