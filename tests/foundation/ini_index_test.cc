// What a document remembers of its rows must never show.
#include <gtest/gtest.h>
#include <windows.h>

#include <random>

#include "foundation/ini_document.h"
#include "support/test_place.h"

namespace {

using Random = std::mt19937;

uint32_t Below(Random& random, uint32_t limit) { return static_cast<uint32_t>(random() % limit); }

WString Pick(Random& random, const std::vector<const wchar_t*>& from) {
  return WString(from[Below(random, static_cast<uint32_t>(from.size()))]);
}

// Mostly one of many plain keys, so that tables are made and grow, and else what is matched oddly.
WString SomeKey(Random& random) {
  if (Below(random, 4) == 0) {
    return Pick(random, {L"a", L"A", L"aB", L"ab", L" a", L"a\t", L"a=b", L"a =", L"ä", L"Ä", L"[a", L"[a]",
                         L";a", L"a\n", L"\na", L"k1=", L"="});
  }
  WString key;
  key.FromUInt32(Below(random, 90));
  return (Below(random, 2) ? L"k" : L"kK") + key;
}

WString SomeSection(Random& random) {
  return Pick(random,
              {L"S", L"S", L"S", L"s", L"Sec", L"sEC", L"SEC", L"T", L"T", L"T]x", L"Missing", L"a\nb"});
}

// The same rows in a document that has been asked for nothing yet.
struct Copy {
  IniDocument document;
  explicit Copy(IniDocument& other) {
    for (uint32_t row = 0; row < other.lines.count; ++row) {
      document.lines.Add(std::as_const(other.lines)[row].CStr());
    }
  }
};

// One change or question, put to both documents.
void DoOne(Random& random, IniDocument& document, IniDocument& fresh) {
  const WString section = SomeSection(random), key = SomeKey(random), value = SomeKey(random);
  const auto both = [&](auto operation) { EXPECT_EQ(operation(document), operation(fresh)); };
  const uint32_t what = Below(random, 60);
  if (what == 0) {
    both([&](IniDocument& one) { return one.RemoveSection(section.CStr()), 0; });
  } else if (what < 4) {
    both([&](IniDocument& one) { return one.DeleteKey(section.CStr(), key.CStr()); });
  } else if (what == 4) {
    const uint32_t row = Below(random, document.lines.count + 1);
    both([&](IniDocument& one) { return one.lines.Insert(row, value.CStr()), 0; });
  } else if (what == 5 && document.lines.count != 0) {
    const uint32_t row = Below(random, document.lines.count);
    both([&](IniDocument& one) { return one.lines[row] = value, 0; });
  } else if (what < 30) {
    both([&](IniDocument& one) { return one.SetValue(section.CStr(), key.CStr(), value.CStr()); });
  } else {
    both([&](IniDocument& one) { return WString(one.GetValue(section.CStr(), key.CStr(), L"none")); });
    uint32_t first[2], end[2];
    document.FindSection(section.CStr(), first[0], end[0]);
    fresh.FindSection(section.CStr(), first[1], end[1]);
    EXPECT_EQ(first[0], first[1]);
    EXPECT_EQ(end[0], end[1]);
  }
}

TEST(IniIndex, ADocumentAnswersAsOneThatRemembersNothing) {
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    Random random(seed);
    IniDocument document;
    for (int step = 0; step < 600 && !testing::Test::HasFailure(); ++step) {
      Copy copy(document);
      DoOne(random, document, copy.document);
      ASSERT_EQ(WString(document.BuildText()), WString(copy.document.BuildText()))
          << "seed " << seed << ", step " << step;
    }
    ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed;
  }
}

// A walk for each of so many keys would take minutes, and an info file can have a million.
TEST(IniIndex, ManyKeysAreSetAndReadInTime) {
  constexpr uint32_t kKeys = 100'000;
  IniDocument document;
  const uint64_t before = GetTickCount64();
  for (const wchar_t* section : {L"ExtraFolders", L"NewExtraFolders", L"ExtraFolders"}) {
    for (uint32_t key = 0; key < kKeys; ++key) {
      WString name;
      name.FromUInt32(key);
      name.Prepend(L"C:\\folder");
      document.SetValue(section, name.CStr(), L"1");
      EXPECT_EQ(document.GetNumber(L"ExtraFolders", name.CStr()), 1u);
      EXPECT_EQ(document.GetNumber(L"Missing", name.CStr()), 0u);
    }
  }
  EXPECT_EQ(document.lines.count, 2 * kKeys + 2);
  EXPECT_LT(GetTickCount64() - before, 60'000u);
}

}  // namespace
