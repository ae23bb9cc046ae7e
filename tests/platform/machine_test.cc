// machine.ini and accounts.ini: what is written is read, and what is wrong is told.
#include "machine/machine.h"

#include <gtest/gtest.h>

#include "machine/settings_text.h"
#include "platform/test_machine.h"

namespace {

using namespace machine;

TEST(MachineFolder, IsReadAsItWasWritten) {
  DiskFolder place;
  Machine machine;
  machine.folder = place.path;
  machine.settings.drives = {{'E', "/tmp"}};
  machine.settings.readOnlyDrives = "E";
  Account anna;
  anna.name = "Anna [1]";
  anna.sid = "S-1-5-21-1-2-3-1001";
  anna.fullName = "Anna = Berg; #1";
  anna.comment = "two\r\nlines";
  anna.type = AccountType::kGuest;
  anna.flags = 0x10203;
  anna.groups = {"Guests", "Users"};
  machine.accounts = {anna};
  std::string error;
  ASSERT_TRUE(machine.Save(&error)) << error;

  Machine read;
  ASSERT_TRUE(Machine::Open(place.path + "/", read, &error)) << error;
  EXPECT_EQ(read.folder, std::filesystem::canonical(place.path).string());
  EXPECT_EQ(read.DriveFolder('e'), "/tmp");
  EXPECT_TRUE(read.IsReadOnlyDrive('E') && read.IsAttachedDrive('e') && !read.IsReadOnlyDrive('C'));
  ASSERT_EQ(read.accounts.size(), 1u);
  EXPECT_EQ(read.accounts[0].fullName, "Anna = Berg; #1");
  EXPECT_EQ(read.accounts[0].comment, "two  lines");
  EXPECT_EQ(read.accounts[0].type, AccountType::kGuest);
  EXPECT_EQ(read.accounts[0].flags, 0x10203u);
  EXPECT_EQ(read.accounts[0].groups, anna.groups);
  EXPECT_EQ(read.FindAccount("ANNA [1]"), &read.accounts[0]);
}

// A sentence that names the file is all that a person has to find the mistake with.
TEST(MachineFolder, TellsWhatIsWrong) {
  const struct {
    const char* machine;
    const char* accounts;
    const char* expected;
  } cases[] = {
      {nullptr, "", "is no machine folder"},
      {"[Machine]\nVersion=10\n", "", "\"Version=10\""},
      {"[Machine]\nSystemDrive=1\n", "", "isn't a drive letter"},
      {"[Machine]\n[Drives]\nD=relative\n", "", "\"D=relative\""},
      {"[Machine\n", "", "line 1"},
      {"; nothing\n", "", "no section [Machine]"},
      {"[Machine]\n", nullptr, "accounts.ini"},
      {"[Machine]\n", "[Anna]\nSid=S-1-5-21-1\nType=boss\n", "unknown type \"boss\""},
      {"[Machine]\n", "[Anna]\n", "lacks its name or its"},
      {"[Machine]\n", "[Anna]\nSid=S-1-5-21-1\n[ANNA]\nSid=S-1-5-21-2\n", "twice"},
  };
  for (const auto& one : cases) {
    DiskFolder place;
    if (one.machine) PutBytes(place.path + "/machine.ini", one.machine);
    if (one.accounts) PutBytes(place.path + "/accounts.ini", one.accounts);
    Machine machine;
    std::string error;
    EXPECT_FALSE(Machine::Open(place.path, machine, &error)) << one.expected;
    EXPECT_NE(error.find(one.expected), std::string::npos) << error;
    EXPECT_NE(error.find(place.path), std::string::npos) << error;
  }
}

// A drive that is a link would let every path lead out of the machine.
TEST(MachineFolder, DriveIsNoLink) {
  TestMachine place;
  std::filesystem::create_directory_symlink("/tmp", place.Folder() + "/E");
  std::filesystem::create_directory(place.Folder() + "/F");
  EXPECT_EQ(ThisMachine().DriveFolder('E'), "");
  EXPECT_EQ(ThisMachine().Drives(), "CDF");
}

}  // namespace
