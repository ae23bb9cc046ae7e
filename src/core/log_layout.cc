#include "core/log_layout.h"

#include <algorithm>

#include "foundation/wstring.h"

namespace {

constexpr int64_t kUnit = sizeof(wchar_t);
constexpr int32_t kStampUnits = 23;
constexpr int32_t kHeadUnits = 64;  // of a line: enough for a stamp and for the name of a section

bool IsBlank(wchar_t unit) { return unit == L' ' || unit == L'\t'; }

// A line as far as it matters here.
struct Line {
  int64_t start = 0;        // in the file
  int32_t headUnits = 0;    // of `head`
  bool isBlanks = true;     // nothing but blanks, at least one
  bool hasClosing = false;  // a "]" stands in it
  wchar_t head[kHeadUnits + 1] = {};

  void Begin(int64_t position) {
    start = position;
    headUnits = 0;
    isBlanks = true;
    hasClosing = false;
  }
  void Add(wchar_t unit) {
    if (unit != L' ') isBlanks = false;
    if (unit == L']') hasClosing = true;
    if (headUnits < kHeadUnits) head[headUnits++] = unit;
  }
};

class LayoutReader {
 public:
  LayoutReader(const wchar_t* section, LogLayout& layout) : layout_(layout), section_(section) {
    section_.Trim(kTrimLeading | kTrimTrailing);
  }

  void Begin(int64_t position) { line_.Begin(position); }

  // One unit of the file, which stands at `position`.
  void Take(wchar_t unit, int64_t position) {
    lastUnit_ = unit;
    if (unit == L'\n') {
      EndLine(position + kUnit);
    } else if (unit != L'\r') {
      line_.Add(unit);
    }
  }

  void Finish(int64_t end) {
    bool isOpenLine = line_.start < end;  // only the file's last line can be without a line end
    if (isOpenLine) EndLine(end);
    if (isInside_) EndSection(end);
    if (!layout_.hasSection) layout_.insertAt = end;
    layout_.needsLineEnd = isOpenLine && layout_.insertAt == end;
  }

 private:
  bool IsSectionLine() const {
    int32_t i = 0;
    while (i < line_.headUnits && IsBlank(line_.head[i])) i++;
    return i < line_.headUnits && line_.head[i] == L'[' && line_.hasClosing;
  }

  bool IsWantedSection() {
    line_.head[line_.headUnits] = 0;
    WString name(line_.head);
    int32_t opening = name.Find(L"[");
    int32_t closing = name.Find(L"]");
    if (closing <= opening + 1) return false;
    WString inside;
    inside.AssignMid(name.CStr(), opening + 1, closing - opening - 1);
    inside.Trim(kTrimLeading | kTrimTrailing);
    return inside.EqualsNoCase(section_);
  }

  void EndLine(int64_t next) {
    if (IsSectionLine()) {
      if (isInside_) EndSection(line_.start);
      if (!layout_.hasSection && IsWantedSection()) {
        layout_.hasSection = true;
        isInside_ = true;
      }
      blanksStart_ = -1;
    } else if (isInside_) {
      TakeSectionLine(next);
    }
    line_.Begin(next);
  }

  void TakeSectionLine(int64_t next) {
    bool isRoom = line_.isBlanks && line_.headUnits > 0 && lastUnit_ == L'\n';
    blanksStart_ = isRoom ? line_.start : -1;
    blanksEnd_ = next;
    if (line_.headUnits > kStampUnits && line_.head[kStampUnits] == L'=') layout_.times.AddStamp(line_.head);
  }

  // `end` is where the next section line stands, or the file's end.
  void EndSection(int64_t end) {
    isInside_ = false;
    layout_.insertAt = blanksStart_ >= 0 ? blanksStart_ : end;
    layout_.room = blanksStart_ >= 0 ? blanksEnd_ - blanksStart_ : 0;
  }

  LogLayout& layout_;
  WString section_;
  Line line_;
  wchar_t lastUnit_ = 0;
  bool isInside_ = false;
  int64_t blanksStart_ = -1;  // of the line of blanks that was read last, -1 if it was another one
  int64_t blanksEnd_ = 0;
};

}  // namespace

bool ReadLogLayout(HANDLE file, const wchar_t* section, LogLayout& layout) {
  layout = LogLayout();
  LARGE_INTEGER size, start = {};
  if (!GetFileSizeEx(file, &size) || !SetFilePointerEx(file, start, nullptr, FILE_BEGIN)) return false;
  layout.size = size.QuadPart;
  LayoutReader reader(section, layout);
  std::vector<wchar_t> units(32768);
  int64_t position = 0;
  for (;;) {
    DWORD read = 0;
    if (!ReadFile(file, units.data(), static_cast<DWORD>(units.size() * sizeof(wchar_t)), &read, nullptr))
      return false;
    DWORD count = read / sizeof(wchar_t);  // half a unit at the end is none
    DWORD first = 0;
    if (position == 0) {
      layout.isUtf16 = count > 0 && units[0] == kByteOrderMark;
      if (!layout.isUtf16) return true;
      first = 1;
      reader.Begin(kUnit);
    }
    for (DWORD i = first; i < count; i++) reader.Take(units[i], position + i * kUnit);
    position += count * kUnit;
    if (count == 0 || read % kUnit != 0) break;
  }
  layout.size = position;
  reader.Finish(position);
  return true;
}
