#include "operations/restore_start.h"

#include <gtest/gtest.h>

#include "operations/path_queries.h"
#include "support/test_place.h"

namespace {

// Another spelling of the system's drive would copy the machine's accounts onto themselves.
TEST(RestoreStart, KnowsTheSystemsOwnRoot) {
  for (const wchar_t* root : {L"C:", L"c:\\", L"C:/", L"C:\\Windows\\..", L"\\\\?\\C:\\", L"C:\\\\",
                              L"\\\\localhost\\C$", L"\\\\127.0.0.1\\c$\\Windows\\.."})
    EXPECT_TRUE(IsSystemRoot(root, L"C:")) << Utf8(root);
  TestPlace place;
  for (const WString& root :
       {WString(L"C:\\Windows"), place.Path(), WString(L"D:"), WString(L""), WString(L"\\\\other\\C$")})
    EXPECT_FALSE(IsSystemRoot(root.CStr(), L"C:")) << Utf8(root);
  EXPECT_TRUE(IsFolderPath(L"C:")) << "a drive without its backslash is its root, too";
}

// Moving between two drives fails file by file.
TEST(RestoreStart, TellsWhetherFilesCanBeMoved) {
  const struct {
    const wchar_t* root;
    bool isOnIt;
  } cases[] = {{L"C:\\Windows.old", true}, {L"c:\\x", true}, {L"\\\\?\\C:\\x", true},
               {L"D:\\C:", true},          {L"D:", false},   {L"D:\\folder\\C:", false},
               {L"\\\\server\\C:", false}, {L"", false}};
  for (const auto& test : cases) EXPECT_EQ(IsOnSystemDrive(test.root, L"C:"), test.isOnIt) << Utf8(test.root);
}

}  // namespace
