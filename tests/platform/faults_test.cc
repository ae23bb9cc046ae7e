// Faults that are asked for hit the call that they name, and nothing else.
#include <gtest/gtest.h>
#include <windows.h>

#include "machine/faults.h"
#include "platform/disk_side.h"

namespace {

using machine::FaultPlan;

class Faults : public testing::Test {
 protected:
  void TearDown() override { machine::ClearFaults(); }
  TestPlace place;
};

UniqueFile Create(const WString& path) { return Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS); }

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
}

TEST_F(Faults, AreReadFromAFile) {
  const std::string file = OnDisk(place.Path()) + "/faults.ini";
  std::string error;
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
