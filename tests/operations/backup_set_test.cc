#include "operations/backup_set.h"

#include <gtest/gtest.h>

#include "support/test_place.h"

namespace {

// Digests made by another program over the UTF-16 units with their terminator. Would catch a name that
// another build of the program doesn't find: without the terminator, in another encoding, or in small
// letters.
TEST(Md5Name, IsThatOfTheUnitsWithTheirTerminator) {
  const std::pair<const char*, const char*> cases[] = {
      {"C:\\Data", "64C8003575A33831C5D0C3471BB51F6A"},
      {"C:\\data", "BA4ABFE7B3391BC0114C3CD932FCCB67"},
      {"D:\\Größe\\日本", "8E69EFE05F9AAB7F51BDAC19FD57ED29"},
      {"D:\\😀", "E10C27F9C8403BF871A9D6038E689F80"},
  };
  for (const auto& [path, digest] : cases) {
    WString name(L"before");
    EXPECT_TRUE(Md5Name(Wide(path).CStr(), name)) << path;
    EXPECT_EQ(Utf8(name), digest) << path;
    EXPECT_EQ(name.Length(), 32);
  }
}

// A key that doesn't survive the file would stand for another folder or account, or for none.
TEST(CanBeKey, RefusesWhatAnInfoFileCantHold) {
  for (const char* key : {"Anna", "C:\\Data", "Größe", "a [b]", "a;b"}) {
    EXPECT_TRUE(CanBeKey(Wide(key).CStr())) << key;
    IniDocument document;
    document.SetValue(L"Section", Wide(key).CStr(), L"1");
    EXPECT_EQ(document.GetNumber(L"Section", Wide(key).CStr()), 1u) << key;
  }
  for (const char* key : {"", "C:\\a=b", "a\nb", "a\rb", "[a", ";a", " a", "a "}) {
    EXPECT_FALSE(CanBeKey(Wide(key).CStr())) << key;
  }
}

// An info file may be a stranger's. "Delete from backup" deletes what this gives.
TEST(ExtraFolderDestination, NeverLeadsOutOfTheSet) {
  const char* inSet = "D:\\B\\X\\ExtraFolders\\";
  const std::pair<const char*, const char*> cases[] = {
      {"0123456789ABCDEF0123456789ABCDEF", "0123456789ABCDEF0123456789ABCDEF"},
      {"", "64C8003575A33831C5D0C3471BB51F6A"},
      {"..", "64C8003575A33831C5D0C3471BB51F6A"},
      {".", "64C8003575A33831C5D0C3471BB51F6A"},
      {". .", "64C8003575A33831C5D0C3471BB51F6A"},
      {"..\\..\\Windows", "64C8003575A33831C5D0C3471BB51F6A"},
      {"a/b", "64C8003575A33831C5D0C3471BB51F6A"},
      {"C:", "64C8003575A33831C5D0C3471BB51F6A"},
  };
  for (const auto& [value, name] : cases) {
    IniDocument document;
    document.SetValue(kNewExtraFoldersSection, L"C:\\Data", Wide(value).CStr());
    EXPECT_EQ(Utf8(ExtraFolderDestination(document, L"D:\\B\\X", L"C:\\Data")), std::string(inSet) + name)
        << value;
  }
  IniDocument empty;
  EXPECT_EQ(Utf8(ExtraFolderDestination(empty, L"D:\\B\\X", L"C:\\Data")),
            "D:\\B\\X\\ExtraFolders\\64C8003575A33831C5D0C3471BB51F6A");
  EXPECT_TRUE(ExtraFolderDestination(empty, L"", L"C:\\Data").IsEmpty());
}

TEST(BackupSet, RemovingTakesEveryKeyOfTheItem) {
  IniDocument document;
  for (const wchar_t* section : {kUsersSection, kBackupUsersSection, kRestoreUsersSection}) {
    document.SetValue(section, L"Anna", L"1");
    document.SetValue(section, L"Annabel", L"1");
  }
  for (const wchar_t* section : {kExtraFoldersSection, kNewExtraFoldersSection}) {
    document.SetValue(section, L"C:\\Data", L"1");
    document.SetValue(section, L"C:\\Data2", L"1");
  }
  RemoveUserFromSet(document, L"Anna");
  RemoveExtraFolderFromSet(document, L"C:\\Data");
  EXPECT_EQ(Utf8(document.BuildText()),
            "[Users]\r\nAnnabel=1\r\n[BackupUsers]\r\nAnnabel=1\r\n[RTBackupUsers]\r\nAnnabel=1\r\n"
            "[ExtraFolders]\r\nC:\\Data2=1\r\n[NewExtraFolders]\r\nC:\\Data2=1\r\n");
}

}  // namespace
