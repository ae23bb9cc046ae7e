#include "arguments.h"

#include "command_machine.h"
#include "resources/version.h"
#include "support/log_text.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

ConsoleArguments Parsed(const std::vector<std::string>& words) {
  ConsoleArguments arguments;
  std::string text;
  EXPECT_EQ(ParseArguments(words, arguments, text), ParseOutcome::kRun) << text;
  return arguments;
}

// An option that swallows the next one's value backs up the wrong accounts.
TEST(Arguments, RepeatedOptionsTakeOneValueEach) {
  const ConsoleArguments plain = Parsed({"backup", "--to", "D:\\B"});
  EXPECT_EQ(plain.to + "|" + plain.folders, "D:\\B|all");
  EXPECT_FALSE(plain.hasName || plain.updateOnly || plain.copiesSystem || plain.copiesHidden);
  const ConsoleArguments full =
      Parsed({"backup",        "--user", "Anna",    "--extra",   "C:\\a b", "--user=-odd-", "--extra",
              "D:\\ü",         "--to",   "D:",      "--name",    "",        "--update",     "--copy-hidden",
              "--copy-system", "--json", "--quiet", "--dry-run", "--log",   "x.log"});
  EXPECT_EQ(full.command, ConsoleCommand::kBackup);
  EXPECT_THAT(full.users, ElementsAre("Anna", "-odd-"));
  EXPECT_THAT(full.extraFolders, ElementsAre("C:\\a b", "D:\\ü"));
  EXPECT_TRUE(full.hasName);
  EXPECT_EQ(full.name, "");
  EXPECT_TRUE(full.updateOnly && full.copiesSystem && full.copiesHidden);
  EXPECT_TRUE(full.isJson && full.isQuiet && full.isDryRun);
  EXPECT_EQ(full.log, "x.log");
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
                 ("  norvanectl backup --to D:\\Backups --name Office --user Anna --user Bob --folders "
                  "desktop,documents\n")},
                11},
               {"restore", restore, 11},
               {"restore-from", restore, 14},
               {"copy", {"SOURCE", "TARGET", "--overwrite", "--copy-system", "--copy-hidden"}, 8},
               {"move", {"SOURCE", "TARGET", "--overwrite", "--copy-system", "--copy-hidden"}, 8}};
  for (const auto& test : cases) {
    const std::string help = Norvanectl({test.command, "--help"}).results;
    for (const char* part : common) EXPECT_THAT(help, HasSubstr(part)) << test.command;
    for (const char* part : test.parts) EXPECT_THAT(help, HasSubstr(part)) << test.command;
    EXPECT_EQ(LogPlace::Count(help, "(default:"), test.defaults) << test.command;
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
