// Hives as files: made, changed, refused when they are damaged, never written where they aren't ours.
#include "machine/hive_store.h"

#include <gtest/gtest.h>
#include <sys/xattr.h>

#include "machine/faults.h"
#include "platform/privilege_switch.h"
#include "platform/test_machine.h"

namespace {

using namespace machine;

HivePlan SmallPlan() {
  HivePlan plan;
  plan.Key("Software\\Größe\\漢字").Text("Wert", "Straße");
  plan.Key("Software\\Größe").Number("", 7);
  plan.Key("Environment").Text("TMP", "%USERPROFILE%\\Temp", REG_EXPAND_SZ);
  return plan;
}

class HiveFile : public testing::Test {
 protected:
  std::shared_ptr<Hive> Open() const {
    std::shared_ptr<Hive> hive;
    EXPECT_EQ(Hive::Open(file, true, hive), 0u);
    return hive;
  }
  std::shared_ptr<Hive> Make(const HivePlan& plan = SmallPlan()) const {
    EXPECT_EQ(Hive::Make(file, plan), 0u);
    return Open();
  }
  DiskFolder place;
  const std::string file = place.path + "/a";
};

// Would catch a base block, cell or name that only our own reader takes: hivexml is none of ours.
TEST_F(HiveFile, IsReadByAnotherProgram) {
  Make();
  const ProgramRun run = RunProgramOf("hivexml " + file);
  EXPECT_EQ(run.code, 0) << run.output;
  for (const char* expected :
       {"name=\"Größe\"", "name=\"漢字\"", "value=\"Straße\"", "%USERPROFILE%\\Temp"}) {
    EXPECT_NE(run.output.find(expected), std::string::npos) << expected << "\n" << run.output;
  }
}

// libhivex compares ASCII letters only; a profile's key with an umlaut would be made twice.
TEST_F(HiveFile, ComparesAllLettersWithoutCase) {
  const std::shared_ptr<Hive> hive = Make();
  EXPECT_NE(hive->Find(hive->Root(), "SOFTWARE\\GRÖßE\\漢字"), 0u);
  std::string text;
  EXPECT_TRUE(hive->ReadText("software\\größe\\漢字", "WERT", text));
  EXPECT_EQ(text, "Straße");

  const Hive::Key key = hive->Find(hive->Root(), "Software\\Größe");
  ASSERT_EQ(hive->SetValue(key, {"ÄÖÜ", REG_SZ, "x"}), 0u);
  ASSERT_EQ(hive->SetValue(key, {"äöü", REG_SZ, "y"}), 0u);
  std::vector<HiveValue> values;
  ASSERT_EQ(hive->Values(key, values), 0u);
  EXPECT_EQ(values.size(), 2u);  // the default one and this
}

// Would catch a change that stays in memory, a hive whose other values are lost by it, and attributes
// that go with the old file.
TEST_F(HiveFile, ChangesReachTheFileWithItsAttributes) {
  std::shared_ptr<Hive> hive = Make();
  ASSERT_EQ(setxattr(file.c_str(), "user.DOSATTRIB", "0x22", 4, 0), 0);
  Hive::Key child = 0;
  ASSERT_EQ(hive->AddChild(hive->Root(), "New", child), 0u);
  ASSERT_EQ(hive->SetValue(child, {"big", REG_BINARY, std::string(20000, 'b')}), 0u);
  ASSERT_EQ(hive->DeleteChild(hive->Find(hive->Root(), "Software\\Größe\\漢字")), 0u);
  const std::string before = BytesOf(file);
  EXPECT_EQ(hive->Find(hive->Root(), "Software\\Größe\\漢字"), 0u);
  EXPECT_TRUE(BytesOf(file) == before);
  ASSERT_EQ(hive->Flush(), 0u);

  hive = Open();
  HiveValue value;
  ASSERT_EQ(hive->ReadValue(hive->Find(hive->Root(), "New"), "BIG", value), 0u);
  EXPECT_EQ(value.data, std::string(20000, 'b'));
  EXPECT_EQ(hive->Find(hive->Root(), "Software\\Größe\\漢字"), 0u);
  EXPECT_NE(hive->Find(hive->Root(), "Environment"), 0u);
  char attribute[8] = {};
  EXPECT_EQ(getxattr(file.c_str(), "user.DOSATTRIB", attribute, sizeof attribute), 4);
}

// Two programs on one machine: the second one must not undo in silence what the first one wrote.
TEST_F(HiveFile, RefusesToReplaceWhatSomebodyElseWrote) {
  std::shared_ptr<Hive> first = Make(), second = Open();
  Hive::Key child = 0;
  ASSERT_EQ(first->AddChild(first->Root(), "First", child), 0u);
  ASSERT_EQ(second->AddChild(second->Root(), "Second", child), 0u);
  EXPECT_EQ(first->Flush(), 0u);
  EXPECT_EQ(second->Flush(), DWORD{ERROR_SHARING_VIOLATION});
  second = Open();
  EXPECT_NE(second->Find(second->Root(), "First"), 0u);
}

// Sums up a walk over all keys and values. It ends for every file, and stays below a bound.
size_t WalkAll(Hive& hive, Hive::Key key, size_t depth) {
  size_t seen = 1;
  std::vector<Hive::Key> children;
  std::vector<HiveValue> values;
  std::string name;
  hive.Name(key, name);
  hive.Values(key, values);
  if (depth > 200 || hive.Children(key, children) != 0) return seen;
  for (const Hive::Key child : children) seen += WalkAll(hive, child, depth + 1);
  return seen;
}

// Files of dead disks are damaged in any place; a crash or an endless walk would end the rescue.
TEST_F(HiveFile, SurvivesAnyDamage) {
  HivePlan plan = SmallPlan();
  for (int i = 0; i < 20; ++i) plan.Key("Many\\k" + std::to_string(i)).Text("v", "text");
  Make(plan);
  const std::string whole = BytesOf(file);
  uint64_t state = 1;
  const auto next = [&] {
    return state = state * 6364136223846793005ull + 1442695040888963407ull, state >> 33;
  };
  int opened = 0, changed = 0;
  for (int round = 0; round < 600; ++round) {
    std::string damaged = whole;
    for (uint64_t count = 1 + next() % 4; count > 0; --count) {
      const size_t at = 4096 + next() % (whole.size() - 4096);
      // Words that are likely to be places, counts and lengths do more harm than any byte.
      const uint32_t words[] = {0, 0xFFFFFFFF, 32, static_cast<uint32_t>(next() % whole.size()), 0x7FFFFFFF};
      if (next() % 2 == 0) {
        damaged[at] = static_cast<char>(next());
      } else {
        memcpy(damaged.data() + at / 4 * 4, &words[next() % 5], 4);
      }
    }
    PutBytes(file, damaged);
    std::shared_ptr<Hive> hive;
    if (Hive::Open(file, true, hive) != 0) continue;
    ++opened;
    EXPECT_LT(WalkAll(*hive, hive->Root(), 0), 1000u);
    Hive::Key child = 0;
    changed += hive->AddChild(hive->Root(), "New", child) == 0;
    for (const char* path : {"Many\\k1", "Software\\Größe\\漢字", "Many\\k9"}) {
      const Hive::Key key = hive->Find(hive->Root(), path);
      if (key == 0) continue;
      hive->SetValue(key, {"v", REG_SZ, "abc"});
      hive->DeleteChild(key);
    }
  }
  EXPECT_GT(opened, 200);
  EXPECT_GT(changed, 20);
}

// A key that lists its own parent below it: each path through it would be endless.
TEST_F(HiveFile, ShowsAKeyOnlyBelowItsParent) {
  HivePlan plan;
  plan.Key("Outer\\Inner\\Leaf");
  std::shared_ptr<Hive> hive = Make(plan);
  const auto outer = static_cast<uint32_t>(hive->Find(hive->Root(), "Outer") - 4096);
  const auto leaf = static_cast<uint32_t>(hive->Find(hive->Root(), "Outer\\Inner\\Leaf") - 4096);
  // Every list that names the leaf names the outer key in its place.
  std::string bytes = BytesOf(file);
  int changed = 0;
  for (size_t at = 4096; at + 4 <= bytes.size(); at += 4) {
    if (memcmp(bytes.data() + at, &leaf, 4) != 0) continue;
    memcpy(bytes.data() + at, &outer, 4);
    ++changed;
  }
  ASSERT_GT(changed, 0);
  PutBytes(file, bytes);
  hive = Open();
  EXPECT_NE(hive->Find(hive->Root(), "Outer\\Inner"), 0u);
  EXPECT_EQ(hive->Find(hive->Root(), "Outer\\Inner\\Outer"), 0u);
  EXPECT_EQ(WalkAll(*hive, hive->Root(), 0), 3u);
}

// Two keys with one list of values: libhivex frees it for the first one and ends the program at the second.
TEST_F(HiveFile, RefusesToChangeADamagedOne) {
  HivePlan plan;
  plan.Key("A").Text("v", "of A");
  plan.Key("B").Text("v", "of B");
  std::shared_ptr<Hive> hive = Make(plan);
  constexpr size_t kValueListAt = 4 + 0x28;
  std::string bytes = BytesOf(file);
  memcpy(bytes.data() + hive->FindChild(hive->Root(), "B") + kValueListAt,
         bytes.data() + hive->FindChild(hive->Root(), "A") + kValueListAt, 4);
  PutBytes(file, bytes);
  hive = Open();
  std::string text;
  EXPECT_TRUE(hive->ReadText("B", "v", text));
  EXPECT_EQ(text, "of A");
  for (const char* name : {"A", "B"}) {
    EXPECT_EQ(hive->SetValue(hive->FindChild(hive->Root(), name), {"v", REG_SZ, "x"}),
              DWORD{ERROR_REGISTRY_CORRUPT});
  }
  EXPECT_EQ(hive->Flush(), 0u);
  EXPECT_TRUE(BytesOf(file) == bytes);
}

// A disk that was attached stays as it is, whatever is asked for.
TEST(HiveStore, NeverWritesToAnAttachedDrive) {
  DiskFolder disk;
  ASSERT_EQ(Hive::Make(disk.path + "/NTUSER.DAT", SmallPlan()), 0u);
  const std::string before = BytesOf(disk.path + "/NTUSER.DAT");
  TestMachine place;
  Machine changed = ThisMachine();
  changed.settings.drives['X'] = disk.path;
  UseMachine(changed);
  EnableHivePrivileges();
  ASSERT_EQ(RegLoadKeyW(HKEY_USERS, L"Other", L"X:\\ntuser.dat"), ERROR_SUCCESS);
  HKEY key;
  EXPECT_EQ(RegCreateKeyExW(HKEY_USERS, L"Other\\New", 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr),
            ERROR_WRITE_PROTECT);
  ASSERT_EQ(RegOpenKeyExW(HKEY_USERS, L"Other\\Environment", 0, KEY_SET_VALUE, &key), ERROR_SUCCESS);
  EXPECT_EQ(RegSetValueExW(key, L"a", 0, REG_DWORD, nullptr, 0), ERROR_WRITE_PROTECT);
  RegCloseKey(key);
  EXPECT_EQ(RegUnLoadKeyW(HKEY_USERS, L"Other"), ERROR_SUCCESS);
  // A missing file is made on a drive of ours, and nowhere else.
  EXPECT_EQ(RegLoadKeyW(HKEY_USERS, L"Other", L"X:\\none.dat"), ERROR_FILE_NOT_FOUND);
  EXPECT_TRUE(BytesOf(disk.path + "/NTUSER.DAT") == before);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(disk.path), {}), 1);
}

// A full disk while the registry is written: the old hive must stay whole.
TEST(HiveStore, FailedWriteKeepsTheOldFile) {
  TestMachine place;
  const std::string file = place.Disk("C:\\Windows\\System32\\config\\SOFTWARE");
  const std::string before = BytesOf(file);
  HKEY key;
  ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\New", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                            &key, nullptr),
            ERROR_SUCCESS);
  FaultPlan plan;
  plan.bytesLeft = 100;
  SetFaults(plan);
  EXPECT_EQ(RegFlushKey(key), ERROR_DISK_FULL);
  ClearFaults();
  EXPECT_TRUE(BytesOf(file) == before);
  EXPECT_EQ(RegFlushKey(key), ERROR_SUCCESS);
  EXPECT_TRUE(BytesOf(file) != before);
  RegCloseKey(key);
}

}  // namespace
