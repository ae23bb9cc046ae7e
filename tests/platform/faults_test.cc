// Faults that are asked for hit the call that they name, and nothing else.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <windows.h>

#include "foundation/unique_handle.h"
#include "machine/faults.h"
#include "platform/disk_side.h"

namespace {

using machine::FaultPlan;

class Faults : public testing::Test {
 protected:
  void TearDown() override { machine::ClearFaults(); }
  TestPlace place;
};

UniqueFile Create(const WString& path) {
  return UniqueFile(CreateFileW(path.CStr(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
}

TEST_F(Faults, TheNthMatchingCallFails) {
  FaultPlan plan;
  plan.call = "CreateFileW";
  plan.path = Utf8(place.Path()) + "\\B*.TXT";
  plan.nth = 2;
  plan.error = ERROR_CRC;
  machine::SetFaults(plan);
  EXPECT_TRUE(Create(place / "b1.txt"));
  EXPECT_TRUE(Create(place / "a.txt"));
  EXPECT_TRUE(CreateDirectoryW((place / "b.txt").CStr(), nullptr));
  EXPECT_FALSE(Create(L"\\\\?\\" + (place / "b2.txt")));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_CRC});
  EXPECT_TRUE(Create(place / "b3.txt"));
  EXPECT_EQ(machine::FaultCalls(), 3u);
  EXPECT_EQ(machine::FaultChanges(), 5u);
  plan.andAllLater = true;
  machine::SetFaults(plan);
  EXPECT_TRUE(Create(place / "b1.txt"));
  EXPECT_FALSE(Create(place / "b1.txt"));
  EXPECT_FALSE(Create(place / "b1.txt"));
}

TEST_F(Faults, ADiskFillsUp) {
  FaultPlan plan;
  plan.bytesLeft = 10;
  machine::SetFaults(plan);
  UniqueFile file = Create(place / "a.txt");
  DWORD written = 0;
  EXPECT_TRUE(WriteFile(file.Get(), "1234567", 7, &written, nullptr));
  EXPECT_EQ(ErrorOf(WriteFile(file.Get(), "1234567", 7, &written, nullptr)), DWORD{ERROR_DISK_FULL});
  EXPECT_EQ(written, 3u);
  file.Reset();
  machine::ClearFaults();
  place.File("big.txt", std::string(5000, 'x'));
  machine::SetFaults(plan);
  EXPECT_EQ(ErrorOf(CopyFileExW((place / "big.txt").CStr(), (place / "copy.txt").CStr(), nullptr, nullptr,
                                nullptr, 0)),
            DWORD{ERROR_DISK_FULL});
  EXPECT_FALSE(place.Exists("copy.txt"));
}

TEST_F(Faults, SomethingHappensRightBeforeACall) {
  FaultPlan plan;
  plan.call = "DeleteFileW";
  plan.before = [&](std::string_view, std::string_view path) {
    place.File("made.txt", std::string(path));  // calls of its own don't count
    DeleteFileW((place / "other.txt").CStr());
  };
  place.File("a.txt");
  place.File("other.txt");
  machine::SetFaults(plan);
  EXPECT_TRUE(DeleteFileW((place / "a.txt").CStr()));
  EXPECT_EQ(place.Read("made.txt"), Utf8(place / "a.txt"));
  EXPECT_FALSE(place.Exists("other.txt"));
  EXPECT_EQ(machine::FaultCalls(), 1u);
}

TEST_F(Faults, TheProcessEndsBeforeAChange) {
  pid_t child = fork();
  if (child == 0) {
    FaultPlan plan;
    plan.endAtChange = 3;
    machine::SetFaults(plan);
    for (const char* name : {"1", "2", "3", "4"}) Create(place / name);
    _exit(1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 99);
  EXPECT_EQ(place.List(), (std::vector<std::string>{"1", "2"}));
}

TEST_F(Faults, AreReadFromAFile) {
  const std::string file = OnDisk(place.Path()) + "/faults.ini";
  std::string error;
  EXPECT_TRUE(machine::LoadFaults(file, &error));  // there is none
  EXPECT_FALSE(machine::FaultsAreSet());
  MakeOnDisk(file, "[Faults]\nCall=CreateFileW\nPath=*\\B.TXT\nNth=0x1\nError=32\n");
  ASSERT_TRUE(machine::LoadFaults(file, &error)) << error;
  EXPECT_TRUE(Create(place / "a.txt"));
  EXPECT_FALSE(Create(place / "b.txt"));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
  machine::ClearFaults();
  MakeOnDisk(file, "[Faults]\nNth=two\n");
  EXPECT_FALSE(machine::LoadFaults(file, &error));
  EXPECT_EQ(error, "faults.ini: Nth is no number: two");
}

}  // namespace
