#include "operations/extra_folders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "operations/path_queries.h"
#include "support/test_place.h"

namespace {

using testing::ElementsAre;

// C:\Data must not stand for C:\Database, and a name in other letters is the same folder.
TEST(SameOrInside, ComparesWholeComponentsWithoutCase) {
  const char* inside[][2] = {{"C:\\Data", "C:\\Data"},           {"C:\\Data\\Old", "C:\\Data"},
                             {"c:\\DATA\\x", "C:\\data\\"},      {"C:\\Data\\", "C:\\Data"},
                             {"C:\\ÄRGER\\x", "c:\\ärger"},      {"D:\\x", "D:"},
                             {"\\\\s\\share\\a", "\\\\S\\share"}};
  for (const auto& [inner, outer] : inside) EXPECT_TRUE(IsSameOrInside(Wide(inner), Wide(outer))) << inner;
  const char* outside[][2] = {{"C:\\Database", "C:\\Data"},
                              {"C:\\Data", "C:\\Data\\Old"},
                              {"D:\\Data", "C:\\Data"},
                              {"", "C:\\Data"},
                              {"C:\\Data", ""},
                              {"", ""}};
  for (const auto& [inner, outer] : outside) EXPECT_FALSE(IsSameOrInside(Wide(inner), Wide(outer))) << inner;
}

TEST(ExtraFolders, AreCleanedToOneSpelling) {
  const std::pair<const char*, const char*> cases[] = {{"C:\\Data\\", "C:\\Data"},
                                                       {"C:/Data/x", "C:\\Data\\x"},
                                                       {"C:\\Data\\.\\y\\..\\z", "C:\\Data\\z"},
                                                       {"\\\\?\\C:\\Data", "C:\\Data"},
                                                       {"C:", "C:"},
                                                       {"C:\\", "C:"},
                                                       {"C:\\x\\..", "C:"},
                                                       {"\\\\s\\share\\a\\", "\\\\s\\share\\a"},
                                                       {"", ""}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(Utf8(CleanPath(Wide(text).CStr())), expected) << text;
  }
}

TEST(ExtraFolders, AreRefusedWithTheirReason) {
  TestPlace place;
  WStringArray rows;
  rows.Add(place.Folder("Data").CStr());
  const std::pair<WString, ExtraFolderProblem> cases[] = {
      {place.Folder("Database"), ExtraFolderProblem::kNone},
      {place / "missing", ExtraFolderProblem::kMissing},
      {place.File("file"), ExtraFolderProblem::kFile},
      {place / "file/x", ExtraFolderProblem::kMissing},
      {WString(L"C:"), ExtraFolderProblem::kDriveRoot},
      {WString(L"C:\\"), ExtraFolderProblem::kDriveRoot},
      {place.Folder("a=b"), ExtraFolderProblem::kEqualsSign},
      {place.Folder("a=b/c"), ExtraFolderProblem::kEqualsSign},
      {place / "DATA", ExtraFolderProblem::kCovered},
      {place.Folder("Data/Old"), ExtraFolderProblem::kCovered},
      {WString(), ExtraFolderProblem::kMissing},
  };
  for (const auto& [folder, problem] : cases) {
    EXPECT_EQ(static_cast<int>(CheckExtraFolder(folder.CStr(), rows)), static_cast<int>(problem))
        << Utf8(folder);
    const std::string sentence = Utf8(ExtraFolderSentence(problem, folder.CStr()));
    EXPECT_EQ(sentence.empty(), problem == ExtraFolderProblem::kNone);
  }
}

// A folder must not be backed up twice, by itself and with the one that holds it.
TEST(ExtraFolders, SupersedeTheRowsInsideThem) {
  WStringArray rows;
  std::vector<bool> ticked;
  for (const char* row : {"C:\\Data\\Old", "C:\\Database", "c:\\data\\new\\", "D:\\x"}) {
    rows.Add(Wide(row).CStr());
    ticked.push_back(rows.count % 2 == 1);
  }
  EXPECT_FALSE(IsFolderCovered(L"C:\\Data\\", rows, &ticked));
  ASSERT_EQ(rows.count, 2u);
  EXPECT_EQ(Utf8(rows[0]), "C:\\Database");
  EXPECT_EQ(Utf8(rows[1]), "D:\\x");
  EXPECT_THAT(ticked, ElementsAre(false, false));

  EXPECT_TRUE(IsFolderCovered(L"d:\\X\\y", rows));
  EXPECT_TRUE(IsFolderCovered(L"D:\\x\\", rows));
  EXPECT_EQ(rows.count, 2u);
}

}  // namespace
