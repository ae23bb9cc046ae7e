// Which version follows from what the system tells. Only a machine folder can be told to be another Windows.
#include <gtest/gtest.h>

#include "foundation/windows_version.h"
#include "machine/machine.h"

namespace {

TEST(WindowsVersion, FollowsFromVersionAndBuild) {
  struct Case {
    uint32_t major, minor, build;
    double version;
  };
  const Case cases[] = {
      {5, 1, 2600, 5.1}, {5, 2, 3790, 5.2},    {6, 0, 6002, 6.0},    {6, 1, 7601, 6.1}, {6, 2, 9200, 6.2},
      {6, 3, 9600, 6.3}, {10, 0, 21999, 10.0}, {10, 0, 22000, 11.0}, {11, 0, 1, 11.0},
  };
  machine::MachineSettings& settings = machine::ThisMachine().settings;
  const machine::MachineSettings before = settings;
  for (const Case& c : cases) {
    settings.major = c.major;
    settings.minor = c.minor;
    settings.build = c.build;
    EXPECT_EQ(GetWindowsVersion(), c.version) << c.major << "." << c.minor << "." << c.build;
  }
  settings = before;
}

}  // namespace
