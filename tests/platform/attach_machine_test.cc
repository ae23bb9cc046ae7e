// A disk of a dead Windows: found, read, and left as it is.
#include "machine/attach_machine.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "machine/profile_list.h"
#include "machine/sam_accounts.h"
#include "platform/dead_disk.h"

namespace {

using namespace machine;

class Attach : public testing::Test {
 protected:
  bool Run() {
    AttachPlan plan;
    std::string text = "c=" + disk.Folder();
    EXPECT_TRUE(ParseAttachedDrive(text, plan, &error));
    return AttachMachine(target.path + "/rescue", plan, warnings, &error);
  }
  void TearDown() override { UseMachine(before); }

  Machine before = ThisMachine();
  DeadDisk disk;
  DiskFolder target;
  std::vector<std::string> warnings;
  std::string error;
};

TEST_F(Attach, TakesNamesAndTypesFromTheSam) {
  disk.WriteSam();
  const std::string before = StateOf(disk.Folder());
  ASSERT_TRUE(Run()) << error;
  Machine machine;
  ASSERT_TRUE(Machine::Open(target.path + "/rescue", machine, &error)) << error;
  EXPECT_EQ(machine.settings.computerName, "OLD-PC");
  EXPECT_EQ(machine.settings.build, 22631u);
  EXPECT_EQ(machine.settings.programPath, "N:\\Norvane\\Norvane.exe");
  EXPECT_EQ(machine.settings.readOnlyDrives, "C");
  EXPECT_TRUE(std::filesystem::is_directory(target.path + "/rescue/N/Norvane"));
  ASSERT_EQ(machine.accounts.size(), 4u);  // with the cloud account, without the service
  const Account* anna = machine.FindAccount("anna ä");
  ASSERT_NE(anna, nullptr);
  EXPECT_EQ(anna->sid, "S-1-5-21-11-22-33-1001");
  EXPECT_EQ(anna->fullName, "Anna Berg");
  EXPECT_EQ(anna->comment, "Chief");
  EXPECT_EQ(anna->type, AccountType::kAdministrator);
  EXPECT_EQ(anna->flags, 0x10200u);
  EXPECT_EQ(machine.FindAccount("Bob")->type, AccountType::kGuest);
  EXPECT_EQ(machine.FindAccount("Administrator")->flags, 0x10202u);
  EXPECT_EQ(machine.FindAccount("Cloud")->sid, "S-1-12-1-9-8-7-6");
  EXPECT_TRUE(warnings.empty()) << warnings[0];
  EXPECT_EQ(StateOf(disk.Folder()), before);
}

TEST_F(Attach, NamesAccountsAfterTheirProfilesWithoutASam) {
  disk.Rewrite(".bak");
  // Windows' own spelling of its folders differs from disk to disk.
  std::filesystem::rename(disk.Folder() + "/Windows/System32", disk.Folder() + "/Windows/SYSTEM32");
  std::filesystem::rename(disk.Folder() + "/Windows", disk.Folder() + "/WINDOWS");
  ASSERT_TRUE(Run()) << error;
  const Machine& machine = ThisMachine();
  ASSERT_EQ(machine.accounts.size(), 3u);
  EXPECT_EQ(machine.FindSid("S-1-5-21-11-22-33-1001")->name, "Anna");
  EXPECT_EQ(ProfileOf("S-1-5-21-11-22-33-1001"), "C:\\Users\\Anna");
  // Windows had set this profile aside; its person's files are wanted all the more.
  EXPECT_EQ(machine.FindAccount("Bob")->home, "C:\\Users\\Bob");
  EXPECT_EQ(warnings.size(), 2u);
}

TEST_F(Attach, TellsWhatIsWrong) {
  const auto run = [&](const std::string& drive, const std::string& folder) {
    AttachPlan plan;
    if (!ParseAttachedDrive(drive, plan, &error)) return error;
    return AttachMachine(folder, plan, warnings, &error) ? std::string("done") : error;
  };
  const std::string good = "C=" + disk.Folder(), free = target.path + "/a";
  const struct {
    std::string drive, folder, expected;
  } cases[] = {
      {"C", free, "isn't a drive letter with a folder"},
      {"C=/none/at/all", free, "can't be opened"},
      {good, disk.Folder() + "/Windows/rescue", "would lie on the disk"},
      {"C=" + disk.Above(), target.path + "/b", "none is the system drive"},
      {"D=" + disk.Folder(), target.path + "/c", "calls its own drive C:"},
      {good, "/proc/none", "can't be made"},
  };
  for (const auto& one : cases) {
    const std::string text = run(one.drive, one.folder);
    EXPECT_NE(text.find(one.expected), std::string::npos) << text;
  }
  PutBytes(disk.Config() + "SOFTWARE", std::string(9000, 'x'));
  const std::string text = run(good, target.path + "/d");
  EXPECT_NE(text.find("can't be read"), std::string::npos) << text;
  EXPECT_FALSE(std::filesystem::exists(target.path + "/d/machine.ini"));
}

// Values of a SAM that was torn: each length of each value is tried, and none may be read beyond its end.
TEST(SamAccounts, AreNotReadBeyondTheirBytes) {
  const SamUser user = {1001, "Anna", "Anna Berg", "Comment", "C:\\x", 0x210};
  const std::string v = UserValue(user), f = FixedValue(user),
                    c = GroupValue(544, {"S-1-5-18", "S-1-5-21-1-2-3-4"});
  Account account;
  uint32_t rid = 0, flags = 0;
  for (size_t length = 0; length < v.size(); ++length) {
    // A copy of its own, so that the address sanitizer sees one byte too many.
    const std::vector<char> cut(v.begin(), v.begin() + static_cast<ptrdiff_t>(length));
    ReadAccountValue(std::string_view(cut.data(), cut.size()), account);
    const std::string_view shortF = std::string_view(f).substr(0, std::min(length, f.size()));
    EXPECT_EQ(ReadAccountFlags(shortF, rid, flags), shortF.size() >= 0x3A) << length;
  }
  for (size_t length = 0; length <= c.size(); ++length) {
    const std::vector<char> cut(c.begin(), c.begin() + static_cast<ptrdiff_t>(length));
    EXPECT_LE(ReadGroupMembers(std::string_view(cut.data(), cut.size())).size(), 2u);
  }
  EXPECT_EQ(ReadGroupMembers(c), (std::vector<std::string>{"S-1-5-18", "S-1-5-21-1-2-3-4"}));
  std::string wild = v, many = c;
  PutWord(wild, 0x0C, 0xFFFFFFF0);
  EXPECT_FALSE(ReadAccountValue(wild, account));
  PutWord(many, 0x30, 0xFFFFFFFF);
  EXPECT_EQ(ReadGroupMembers(many).size(), 2u);
}

}  // namespace
