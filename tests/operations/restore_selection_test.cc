#include "operations/restore_selection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "operations/md5_name.h"
#include "support/account_place.h"
#include "support/array_rows.h"

namespace {

using testing::ElementsAre;

std::string NameInSet(const WString& path) {
  WString name;
  EXPECT_TRUE(Md5Name(path.CStr(), name));
  return Utf8(name);
}

template <typename Row>
std::vector<std::string> Rows(const std::vector<Row>& list) {
  std::vector<std::string> rows;
  for (const Row& row : list) {
    rows.push_back(Utf8(row.source) + " > " + Utf8(row.target) + (row.isTicked ? "" : " -"));
  }
  return rows;
}

// A row for what isn't there, two for one folder, or one that leads out of the set.
TEST(RestoreSelection, OffersWhatTheSetHolds) {
  AccountPlace machine;
  machine.Add({.name = "anna"});
  machine.Add({.name = "Carl", .fullName = "Bob Berg"});
  for (const char* folder : {"set/Users/Anna", "set/Users/Bob", "set/Users/Eve", "set/Users/Änne", "outside"})
    machine.files.Folder(folder);
  machine.files.File("set/Users/file");
  machine.files.Folder("set/ExtraFolders/" + NameInSet(L"D:\\Data"));
  IniDocument document;
  const std::pair<const char*, const char*> users[] = {
      {"Anna", "2|Anna A"}, {"Bob", "1|Bob Berg"},      {"Gone", "1|x"},      {"file", "1|x"},
      {"..", "1|x"},        {"..\\..\\outside", "1|x"}, {"Eve", "Eve Adams"}, {"Änne", "1|"}};
  for (const auto& [name, value] : users) document.SetValue(L"Users", Wide(name).CStr(), Wide(value).CStr());
  for (const char* again : {"ANNA=2|x", "Anna=1|y", "änne=1|x", "Anna.=1|x", "gone=1|x", "a:b=1|x", "a:b=1|x",
                            "C:\\Windows=1|x", "\\\\srv\\share=1|x", " <create>=1|x"})
    document.lines.Add(Wide(again).CStr());
  for (const wchar_t* path : {L"D:\\Data", L"D:\\Gone", L"d:\\data"})
    document.SetValue(L"ExtraFolders", path, L"1");
  machine.files.Folder("set/ExtraFolders/" + NameInSet(L"d:\\data"));
  for (const wchar_t* again : {L"D:\\Data=0", L"D:\\Gone=0"}) document.lines.Add(again);
  RestoreSelection selection;
  selection.users.resize(3);
  LeftOutKeys leftOut;
  ReadSetRows(document, {machine.files / "set", true, 0.0}, *LoadUserTable(), selection, &leftOut);
  EXPECT_THAT(Rows(selection.users),
              ElementsAre("Anna > anna", "Bob > Carl", "Eve > Eve <create>", "Änne > Änne <create>"));
  EXPECT_THAT(Rows(selection.extraFolders), ElementsAre("D:\\Data > D:\\Data", "d:\\data > d:\\data"));
  EXPECT_THAT(ArrayRows(leftOut.notPlain),
              ElementsAre("..", "..\\..\\outside", "a:b", "C:\\Windows", "\\\\srv\\share", " <create>"));
  EXPECT_THAT(ArrayRows(leftOut.repeated), ElementsAre("ANNA", "Anna", "änne", "D:\\Data"));
}

// A tick for what is gone says that it will be restored, and a row less says that it never was.
TEST(RestoreSelection, OffersWhatAnEarlierRunTookFromTheRoot) {
  AccountPlace machine;
  machine.files.Folder("root/Data/Work");
  machine.files.File("root/file");
  machine.files.File("root/BackupInfo.nvsav",
                     "[RTExtraFolders2]\r\nData\\Work=D:\\Work\r\ndata\\WORK=D:\\x\r\nData\\Gone=D:\\Gone\r\n"
                     "file=D:\\file\r\nNUL=D:\\x\r\n..\\root=D:\\x\r\n");
  RestoreSelection selection;
  LeftOutKeys leftOut;
  ReadInstallationRows({machine.files / "root", false, 10.0}, *LoadUserTable(), selection, &leftOut);
  const std::string root = Utf8(machine.files / "root");
  EXPECT_THAT(Rows(selection.extraFolders),
              ElementsAre(root + "\\Data\\Work > D:\\Work", root + "\\Data\\Gone > D:\\Gone -",
                          root + "\\file > D:\\file"));
  EXPECT_THAT(ArrayRows(leftOut.notPlain), ElementsAre("NUL", "..\\root"));
  EXPECT_THAT(ArrayRows(leftOut.repeated), ElementsAre("data\\WORK"));
}

// A selection of an earlier run that still counts, or one that the worker can't find.
TEST(RestoreSelection, IsWrittenAnew) {
  IniDocument document;
  document.SetValue(L"Settings", L"UserFolders", L"255");
  document.SetValue(L"RTBackupUsers", L"Old", L"Old");
  document.SetValue(L"RTExtraFolders", L"OLD", L"C:\\old");
  document.SetValue(L"RTExtraFolders2", L"Other", L"C:\\other");
  // Of a stranger, who waits for the first ones to be gone.
  for (const wchar_t* row : {L"[RTExtraFolders]", L"NEW=C:\\new", L"[RTBackupUsers]", L"Carl=Anna"}) {
    document.lines.Add(row);
  }
  RestoreSelection selection;
  selection.users = {{L"Anna", L"Bob", true}, {L"Eve", L"Eve <create>", true}, {L"Carl", L"Carl", false}};
  selection.extraFolders = {{L"D:\\Data", L"E:\\Data", true}, {L"D:\\More", L"E:\\More", false}};
  selection.folderMask = 0x184;
  WriteRestoreSelection(document, {L"C:\\set", true, 0.0}, selection);
  EXPECT_EQ(Utf8(document.BuildText()),
            "[Settings]\r\nUserFolders=255\r\nRTUserFolders=132\r\nRTBackupOptions=2\r\n"
            "[RTExtraFolders2]\r\nOther=C:\\other\r\n"
            "[RTBackupUsers]\r\nAnna=Bob\r\nEve=Eve <create>\r\n"
            "[RTExtraFolders]\r\n" +
                NameInSet(L"D:\\Data") + "=E:\\Data\r\n");

  selection.onlyMissing = false;
  selection.users.clear();
  selection.extraFolders = {{L"E:\\Data\\x", L"C:\\x", true}};
  WriteRestoreSelection(document, {L"E:", false, 10.0}, selection);
  EXPECT_STREQ(document.GetValue(L"RTExtraFolders2", L"Data\\x"), L"C:\\x");
  EXPECT_STREQ(document.GetValue(L"RTExtraFolders2", L"Other", L"gone"), L"gone");
  EXPECT_STREQ(document.GetValue(L"RTBackupUsers", L"Anna", L"gone"), L"gone");
  EXPECT_STREQ(document.GetValue(L"Settings", L"RTBackupOptions"), L"0");
  EXPECT_STREQ(document.GetValue(L"Settings", L"SkipAttributes"), L"6");
}

// A row that a line of the file would change into something else.
TEST(RestoreSelection, TellsWhatItCannotWrite) {
  IniDocument document;
  RestoreSelection selection;
  for (const wchar_t* name : {L"a=b", L"[x]", L";x", L"", L" x", L"a\r\n[Settings]"})
    selection.users.push_back({name, L"Bob", true});
  selection.users.push_back({L"Anna", L"B=b", true});
  selection.users.push_back({L"a=c", L"Bob", false});
  selection.extraFolders = {{L"E:\\Data=x", L"C:\\x", true}, {L"D:\\Data", L"C:\\x", true},
                            {L"E:\\..\\x", L"C:\\x", true},  {L"E:\\Data", L"x", true},
                            {L"E:\\", L"C:\\x", true},       {L"E:\\Data", L"C:\\x", true}};
  WStringArray leftOut;
  WriteRestoreSelection(document, {L"E:", false, 10.0}, selection, &leftOut);
  EXPECT_EQ(leftOut.count, 12u);
  EXPECT_THAT(Utf8(document.BuildText()), testing::HasSubstr("[RTExtraFolders2]\r\nData=C:\\x\r\n"));
  EXPECT_THAT(Utf8(document.BuildText()), testing::Not(testing::HasSubstr("[RTBackupUsers]")));
}

// The name of an extra folder is that of the place as the backup spelled it.
TEST(RestoreSelection, KnowsTheKeyOfAnExtraFolder) {
  const RestoreRoot set{L"C:\\set", true, 0.0};
  EXPECT_NE(Utf8(ExtraFolderKey(set, {L"D:\\Data", L"", true})),
            Utf8(ExtraFolderKey(set, {L"d:\\data", L"", true})));
  struct {
    const wchar_t* root;
    const wchar_t* source;
    const char* key;
  } cases[] = {{L"E:", L"E:\\Data", "Data"},          {L"E:\\", L"e:\\Data\\x", "Data\\x"},
               {L"E:\\old", L"E:\\OLD\\x", "x"},      {L"E:\\old", L"E:\\older\\x", ""},
               {L"E:\\old", L"E:\\old", ""},          {L"E:\\old", L"D:\\x", ""},
               {L"\\\\srv\\a", L"\\\\SRV\\a\\b", "b"}};
  for (const auto& test : cases) {
    EXPECT_EQ(Utf8(ExtraFolderKey({test.root, false, 10.0}, {test.source, L"", true})), test.key);
  }
}

// A row that a person took away would be offered again at the next visit, or its neighbour would be gone.
TEST(RestoreSelection, ForgetsOneExtraFolder) {
  IniDocument document;
  for (const wchar_t* section : {L"RTExtraFolders", L"RTExtraFolders2"}) {
    for (const wchar_t* key : {L"Data\\x", L"Data"}) document.SetValue(section, key, L"D:\\back");
  }
  const RestoreRoot root{L"E:\\old", false, 10.0};
  EXPECT_TRUE(RemoveExtraFolderRow(document, root, {L"e:\\OLD\\Data", L"", false}));
  EXPECT_FALSE(RemoveExtraFolderRow(document, root, {L"E:\\other\\Data", L"", false}));
  EXPECT_EQ(Utf8(document.BuildText()),
            "[RTExtraFolders]\r\nData\\x=D:\\back\r\nData=D:\\back\r\n"
            "[RTExtraFolders2]\r\nData\\x=D:\\back\r\n");
}

// A stranger's set that puts a folder back over the system without anybody's word.
TEST(RestoreSelection, UnticksExtraFoldersThatGoToProtectedPlaces) {
  AccountPlace machine;
  machine.Add({.name = "Anna"});
  machine.Add({.name = "Bob"});
  RestoreSelection selection;
  selection.users = {{L"Anna", L"anna", true}, {L"Bob", L"Bob", false}, {L"x", L"Nobody", true}};
  const std::string anna = Utf8(machine.Profile("Anna")), bob = Utf8(machine.Profile("Bob"));
  for (const std::string& target : {anna + "\\x", bob + "\\x", Utf8(machine.files / "x"), std::string("x")})
    selection.extraFolders.push_back({L"D:\\x", Wide(target), true});
  ProtectedPlaces places(*LoadUserTable());
  AddTargetProfiles(selection, places);
  UntickProtected(places, selection);
  std::string ticks;
  for (const RestoreFolderRow& row : selection.extraFolders) ticks += row.isTicked ? "+" : "-";
  EXPECT_EQ(ticks, "+-+-");
}

}  // namespace
