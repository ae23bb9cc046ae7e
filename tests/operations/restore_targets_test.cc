#include "operations/restore_targets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/account_place.h"

namespace {

std::string Target(const UserTable& table, const char* name, const char* fullName) {
  return Utf8(ChooseTarget(table, Wide(name).CStr(), Wide(fullName).CStr()));
}

// Data that goes to the wrong person, or into a second account of one who has one already.
TEST(RestoreTargets, AreFoundByNameThenByFullNameThenMade) {
  AccountPlace machine;
  machine.Add({.name = "Anna", .fullName = "Anna Berg"});
  machine.Add({.name = "berg", .fullName = "Bob"});
  machine.Add({.name = "Plain"});
  const auto table = LoadUserTable();
  struct {
    const char* name;
    const char* fullName;
    const char* target;
    const char* targetByName;
  } cases[] = {
      {"Anna", "", "Anna", "Anna"},
      {"ANNA", "Other", "Anna", "ANNA"},
      {"Annika", "Anna Berg", "Anna", "Annika <create>"},
      {"Annika", "anna berg", "Anna", "Annika <create>"},
      {"Bob", "Bob", "berg", "Bob <create>"},
      {"Berg", "Anna Berg", "berg", "Berg"},        // the name comes first
      {"Carl", "Plain", "Plain", "Carl <create>"},  // an account without a full name is called by its name
      {"Carl", "", "Carl <create>", "Carl <create>"},
      {"Carl", "Anna", "Carl <create>", "Carl <create>"},  // a name is no full name where there is one
      {"An", "An", "An <create>", "An <create>"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(Target(*table, test.name, test.fullName), test.target) << test.name << "|" << test.fullName;
    EXPECT_EQ(Utf8(ChooseTargetByName(*table, Wide(test.name).CStr())), test.targetByName) << test.name;
  }
}

// A list from which the account that would be made for somebody is missing, or is offered for one who is
// here.
TEST(RestoreTargets, OfferAllAccountsAndTheOneToMake) {
  AccountPlace machine;
  machine.Add({.name = "Anna", .fullName = "Anna Berg"});
  machine.Add({.name = "Bob"});
  const auto table = LoadUserTable();
  WStringArray entries;
  const auto offered = [&](const wchar_t* name) {
    DestinationEntries(*table, name, entries);
    std::string all;
    for (uint32_t i = 0; i < entries.count; i++) all += Utf8(entries[i]) + ";";
    return all;
  };
  EXPECT_EQ(offered(L"Carl"), "Anna;Bob;Carl <create>;");
  EXPECT_EQ(offered(L"bob"), "Anna;Bob;");
  EXPECT_EQ(offered(L"Anna Berg"), "Anna;Bob;");
}

TEST(RestoreTargets, KnowTheMarkOfAnAccountToMake) {
  struct {
    const char* target;
    bool isToBeCreated;
    const char* account;
  } cases[] = {{"Anna", false, "Anna"}, {"Anna <create>", true, "Anna"}, {"Anna <CREATE>", true, "Anna"},
               {" <create>", true, ""}, {"<create>", false, "<create>"}, {"", false, ""}};
  for (const auto& test : cases) {
    WString account;
    EXPECT_EQ(IsToBeCreated(Wide(test.target).CStr(), account), test.isToBeCreated) << test.target;
    EXPECT_EQ(Utf8(account), test.account);
  }
  EXPECT_EQ(Utf8(TargetToCreate(L"Eve")), "Eve <create>");
}

// A name that the system takes and turns into another folder, or that no logon screen can show.
TEST(RestoreTargets, AreNamesThatTheSystemTakes) {
  for (const char* name : {"Anna", "Anna Berg", "Jörg", "12345678901234567890", "a.b", "Conny"})
    EXPECT_TRUE(IsPossibleAccountName(Wide(name))) << name;
  for (const char* name :
       {"123456789012345678901", "", "...", "   ", ". .", "Anna.", "a\\b", "..\\Windows", "a/b", "a:b",
        "PC|x", "a\tb", "me@pc", "a*", "CON", "nul.txt", "Com1", "Anna ", "Anna <create"})
    EXPECT_FALSE(IsPossibleAccountName(Wide(name))) << name;
}

// A type beyond the three, a name of one letter, no word of the account at all, or an administrator on the
// word of the file.
TEST(RestoreTargets, DescribeTheAccountToMake) {
  WStringArray administrators;
  administrators.Add(L"EVA");
  struct {
    const char* value;
    uint32_t type;
    const char* fullName;
  } cases[] = {{"", 1, "eve"},
               {"1|Eve Adams", 1, "Eve Adams"},
               {"2|Eve Adams", 2, "Eve Adams"},
               {"0|Eve", 0, "Eve"},
               {"7|E", 1, "eve"},
               {"2", 2, "eve"},
               {"2|", 2, "eve"},
               {"2|A|B", 2, "A|B"},
               {"|Eve A", 1, "Eve A"},
               {"x|Eve A", 1, "Eve A"},
               {"2x|Eve A", 2, "Eve A"}};
  for (const auto& test : cases) {
    const AccountToCreate wanted =
        DescribeAccountToCreate(Wide(test.value).CStr(), L"Eva", L"eve", &administrators);
    EXPECT_EQ(wanted.type, test.type) << test.value;
    EXPECT_FALSE(wanted.isLowered);
    const AccountToCreate lowered =
        DescribeAccountToCreate(Wide(test.value).CStr(), L"Bob", L"Eva", &administrators);
    EXPECT_EQ(lowered.type, test.type == 2 ? 1 : test.type) << test.value;
    EXPECT_EQ(lowered.isLowered, test.type == 2) << test.value;
    EXPECT_EQ(Utf8(wanted.fullName), test.fullName) << test.value;
  }
  EXPECT_EQ(DescribeAccountToCreate(nullptr, L"Eva", L"eve", nullptr).type, 1u);
  EXPECT_TRUE(DescribeAccountToCreate(L"2|E", L"Eva", L"eve", nullptr).isLowered);
}

}  // namespace
