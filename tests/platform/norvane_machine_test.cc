// The program norvane-machine, and the way of norvanectl to its machine.
#include <gtest/gtest.h>

#include "platform/test_machine.h"

namespace {

// Beside the folder of the test programs.
std::string Program(const std::string& name) {
  const auto self = std::filesystem::read_symlink("/proc/self/exe");
  return (self.parent_path().parent_path() / name).string();
}
ProgramRun RunMachine(const std::string& arguments) {
  return RunProgramOf(Program("norvane-machine") + " " + arguments);
}

TEST(NorvaneMachine, CreatesShowsAndLists) {
  DiskFolder place;
  const std::string folder = place.path + "/pc";
  const ProgramRun made =
      RunMachine("create " + folder +
                 " --version 6.1.7601 --account 'Anna:administrator:Anna: Berg' "
                 "--account Bob --account Eve:guest --console ANNA --drives DE --computer OFFICE");
  EXPECT_EQ(made.code, 0) << made.output;
  const ProgramRun shown = RunMachine("show " + folder);
  for (const char* expected :
       {"OFFICE, Windows 6.1.7601", "at the console:  Anna", "  E:  ", "Anna  administrator", "Eve  guest",
        "Anna: Berg", "C:\\Users\\Bob\n", "explorer.exe"}) {
    EXPECT_NE(shown.output.find(expected), std::string::npos) << expected << "\n" << shown.output;
  }
  const ProgramRun key =
      RunMachine("reg " + folder + " 'HKLM64\\software\\Microsoft\\Windows NT\\CurrentVersion'");
  EXPECT_NE(key.output.find("CurrentBuild  REG_SZ  7601"), std::string::npos) << key.output;
  const ProgramRun hive = RunMachine("reg " + folder + " 'HKU\\bob\\Environment'");
  EXPECT_NE(hive.output.find("TMP  REG_EXPAND_SZ  %USERPROFILE%"), std::string::npos) << hive.output;
}

// A change of attributes that norvane-machine makes is what the calls then see.
TEST(NorvaneMachine, SetsAttributes) {
  TestMachine place;
  PutBytes(place.Disk("C:\\Users\\Bob\\a.txt"), "x");
  const auto attrib = [&](const std::string& rest) {
    return RunMachine("attrib " + place.Folder() + " " + rest);
  };
  EXPECT_EQ(attrib("'c:\\users\\bob\\A.TXT'").output, "A-----  c:\\users\\bob\\A.TXT\n");
  EXPECT_EQ(attrib("'C:\\Users\\Bob\\a.txt' +R -A +SH").output, "-SHR--  C:\\Users\\Bob\\a.txt\n");
  EXPECT_EQ(GetFileAttributesW(L"C:\\Users\\Bob\\a.txt"),
            DWORD{FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM});
  EXPECT_EQ(attrib("'C:\\Users\\Bob\\a.txt' -R -S -H").output, "------  C:\\Users\\Bob\\a.txt\n");
  EXPECT_EQ(attrib("'C:\\none'").code, 4);
}

TEST(NorvaneMachine, TellsWhatIsWrong) {
  TestMachine place;
  const std::string& folder = place.Folder();
  const struct {
    std::string arguments;
    int code;
    const char* expected;
  } cases[] = {
      {"create " + folder, 4, "isn't empty"},
      {"create " + folder + "/x --version 10", 2, "\"10\" is no version"},
      {"create " + folder + "/x --version 10.0.19045.1", 2, "is no version"},
      {"create " + folder + "/x --version 4.0.1", 2, "is no version"},
      {"create " + folder + "/x --account a/b", 2, "\"a/b\" can't be the name"},
      {"create " + folder + "/x --account a:boss", 2, "\"boss\" is no type"},
      {"create " + folder + "/x --account a --console Nobody", 4, "Nobody"},
      {"create " + folder + "/x --drives 1", 2, "drive letters"},
      {"show /tmp/norvane-none", 4, "\"/tmp/norvane-none\" is no machine folder"},
      {"reg " + folder + " HKXX\\\\a", 4, "begins with no root key"},
      {"reg " + folder + " HKLM\\\\SOFTWARE\\\\None", 4, "can't be read"},
  };
  for (const auto& one : cases) {
    const ProgramRun run = RunMachine(one.arguments);
    EXPECT_EQ(run.code, one.code) << one.arguments << run.output;
    EXPECT_NE(run.output.find(one.expected), std::string::npos) << run.output;
  }
  EXPECT_FALSE(std::filesystem::exists(folder + "/x"));
}

TEST(Norvanectl, NeedsAMachineFolder) {
  TestMachine place;
  DiskFolder broken;
  std::filesystem::copy(place.Folder(), broken.path, std::filesystem::copy_options::recursive);
  PutBytes(broken.path + "/faults.ini", "nonsense\n");
  const struct {
    std::string arguments;
    int code;
    const char* expected;
  } cases[] = {
      {"users", 2, "norvanectl --machine DIR"},
      {"--machine", 2, "norvanectl --machine DIR"},
      {"users --machine /tmp", 2, "norvanectl --machine DIR"},
      {"--machine /tmp/norvane-none users", 4, "\"/tmp/norvane-none\" is no machine folder"},
      {"--machine=" + place.Folder() + " users", 0, "Anna"},
      {"--machine " + broken.path + " users", 4, "faults.ini"},
      {"--help", 0, "--machine DIR"},
  };
  for (const auto& one : cases) {
    const ProgramRun run = RunProgramOf(Program("norvanectl") + " " + one.arguments);
    EXPECT_EQ(run.code, one.code) << one.arguments << run.output;
    EXPECT_NE(run.output.find(one.expected), std::string::npos) << run.output;
  }
}

}  // namespace
