#include "operations/info_file.h"

#include <gtest/gtest.h>

#include "support/test_place.h"

namespace {

// The two orders differ. Taking the wrong file of a set would lose the selection that the other holds.
TEST(InfoFile, IsChosenInTheOrderOfWhoAsks) {
  TestPlace place;
  const WString folder = place.Folder("set");
  auto chosen = [&](WString (*choose)(const wchar_t*)) {
    WString name = choose(folder.CStr());
    return Utf8(name.LastComponent());
  };
  EXPECT_EQ(chosen(ChooseInfoFile), "BackupInfo.grxsv") << "of a new set";
  EXPECT_EQ(chosen(ChooseCustomRootInfoFile), "BackupInfo.nvsav") << "of a new root";
  EXPECT_TRUE(FindInfoFile(folder.CStr()).IsEmpty());

  place.File("set/BackupInfo.grxsv");
  EXPECT_EQ(chosen(ChooseInfoFile), "BackupInfo.grxsv");
  EXPECT_EQ(chosen(FindInfoFile), "BackupInfo.grxsv");

  place.File("set/BackupInfo.nvsav");
  EXPECT_EQ(chosen(ChooseInfoFile), "BackupInfo.nvsav");
  EXPECT_EQ(chosen(ChooseCustomRootInfoFile), "BackupInfo.grxsv");
  EXPECT_EQ(chosen(FindInfoFile), "BackupInfo.nvsav");
  EXPECT_EQ(Utf8(FindInfoFile((folder + L"\\BackupInfo.grxsv").CStr())), Utf8(folder) + "\\BackupInfo.grxsv")
      << "the file itself was named";
  EXPECT_EQ(Utf8(FindInfoFile((folder + L"\\").CStr())), Utf8(folder) + "\\BackupInfo.nvsav");
}

TEST(InfoFile, IsNeverAFolder) {
  TestPlace place;
  place.Folder("BackupInfo.nvsav");
  EXPECT_EQ(Utf8(ChooseInfoFile(place.Path().CStr())), Utf8(place / "BackupInfo.grxsv"));
  EXPECT_TRUE(FindInfoFile(place.Path().CStr()).IsEmpty());
}

// A file of another kind that is in the way would be rewritten as a list of lines.
TEST(InfoFile, IsAnyTextOfModestSize) {
  TestPlace place;
  const std::string large(16 << 20, 'a');
  const std::string utf16 = std::string("\xff\xfe[\0S\0]\0\r\0\n\0", 12);
  const std::pair<std::string, InfoFileState> cases[] = {
      {"", InfoFileState::kReadable},
      {"[Settings]\r\nUserFolders=255\r\n", InfoFileState::kReadable},
      {"\xef\xbb\xbf[Users]\nZo\xc3\xab=1|Zo\xc3\xab\n\x1a", InfoFileState::kReadable},
      {utf16, InfoFileState::kReadable},
      {std::string("\xfe\xff\0[\0S\0]", 8), InfoFileState::kReadable},
      {large, InfoFileState::kReadable},
      {large + "a", InfoFileState::kTooLarge},
      {std::string("MZ\x90\0\3\0", 6), InfoFileState::kBinary},
      {utf16 + std::string("\0\0", 2), InfoFileState::kBinary},
      {std::string("[\0S\0]\0", 6), InfoFileState::kBinary},  // units without a mark
      {"\x1b[0m", InfoFileState::kBinary},
  };
  int number = 0;
  for (const auto& [bytes, state] : cases) {
    const WString path = place.File(std::to_string(++number), bytes);
    EXPECT_EQ(static_cast<int>(CheckInfoFile(path.CStr())), static_cast<int>(state)) << "case " << number;
  }
  EXPECT_EQ(CheckInfoFile(place.Path().CStr()), InfoFileState::kFolder);
  EXPECT_EQ(CheckInfoFile((place / "missing").CStr()), InfoFileState::kMissing);
  EXPECT_EQ(CheckInfoFile((place / "missing/missing").CStr()), InfoFileState::kMissing);
}

}  // namespace
