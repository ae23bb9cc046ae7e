// The log is a file that anybody may have edited. An entry that was reported as written is in it, and all
// that stood there before still is.
#include <algorithm>
#include <string>
#include <string_view>

#include "core/application_log.h"
#include "fuzz_machine.h"

namespace {

// The units of a log of ours; empty for one of another encoding.
std::u16string_view Units(const std::string& bytes) {
  if (bytes.size() < 2 || bytes.compare(0, 2, "\xff\xfe") != 0) return {};
  return {reinterpret_cast<const char16_t*>(bytes.data()), bytes.size() / 2};
}

// What isn't a blank or a line end, in order: a writer may leave and take back blanks for later entries.
std::u16string Marks(std::u16string_view text) {
  std::u16string marks;
  std::copy_if(text.begin(), text.end(), std::back_inserter(marks),
               [](char16_t unit) { return unit != u' ' && unit != u'\r' && unit != u'\n' && unit != u'\t'; });
  return marks;
}

bool IsSubsequence(std::u16string_view part, std::u16string_view whole) {
  size_t found = 0;
  for (const char16_t unit : whole) {
    if (found < part.size() && part[found] == unit) ++found;
  }
  return found == part.size();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  WriteOnDisk("Test/log.txt", data, size);
  const std::string before = ReadFromDisk("Test/log.txt");
  SYSTEMTIME time = {};
  time.wYear = 2024, time.wMonth = 2, time.wDay = 29, time.wHour = 23;
  bool isWritten = true;
  {
    ApplicationLog log;
    for (const wchar_t* section : {L" Backup ", L" Restore ", L" Backup "}) {
      isWritten = log.Write(L"C:\\Test\\log.txt", section, L"Entry of a test", time) && isWritten;
    }
  }
  const std::string after = ReadFromDisk("Test/log.txt");
  if (isWritten) {
    size_t count = 0;
    const std::u16string_view units = Units(after);
    constexpr std::u16string_view kEntry = u"Entry of a test";
    for (size_t at = units.find(kEntry); at != units.npos; at = units.find(kEntry, at + 1)) ++count;
    Require(count >= 3, "each entry is in the log");
  }
  if (!Units(before).empty()) {
    Require(IsSubsequence(Marks(Units(before)), Units(after)), "what stood in the log still does");
  }
  return 0;
}
