#include <gtest/gtest.h>
#include <windows.h>

#include "support/place_root.h"

extern "C" int wmain(int argc, wchar_t** argv) {
  // A crash is a failed test and not a box that waits for somebody.
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  testing::InitGoogleTest(&argc, argv);
  const WString root = PlaceRoot();
  CreateDirectoryW(root.CStr(), nullptr);
  const int result = RUN_ALL_TESTS();
  RemoveDirectoryW(root.CStr());
  return result;
}
