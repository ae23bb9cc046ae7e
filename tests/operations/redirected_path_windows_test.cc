// What a 32-bit program sees in System32 of a 64-bit system.
#include "operations/redirected_path.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "operations/extra_folders.h"
#include "support/test_place.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;

std::string Sentence(const char* path) { return Utf8(RedirectionSentence(Wide(path).CStr())); }

// A set would hold the files of SysWOW64 and say that they are those of System32.
TEST(RedirectedPath, IsRefusedWithTheWayOut) {
  EXPECT_THAT(Sentence("C:\\windows\\system32\\drivers"),
              AllOf(HasSubstr("\"C:\\windows\\system32\\drivers\" is another one"), HasSubstr("syswow64"),
                    HasSubstr("Indicate \"C:\\windows\\Sysnative\\drivers\" instead.")));
  EXPECT_THAT(Sentence("C:\\Windows"), HasSubstr("holds System32"));
  for (const char* free :
       {"C:\\windows\\system", "C:\\windows\\Sysnative", "C:\\Data\\System32", "C:\\", "D:\\"}) {
    EXPECT_EQ(Sentence(free), "") << free;
  }
  EXPECT_EQ(CheckExtraFolder(L"C:\\windows\\system32", WStringArray()), ExtraFolderProblem::kRedirected);
}

}  // namespace
