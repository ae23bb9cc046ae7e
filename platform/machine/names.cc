// names.cc
#include "machine/names.h"

#include <locale.h>
#include <wctype.h>

#include <memory>

#include "machine/call.h"

namespace machine {
namespace {

constexpr char16_t kMoved = 0xF000;  // where the bytes lie that can't be in a name

bool IsHighSurrogate(uint32_t code) { return code >= 0xD800 && code <= 0xDBFF; }
bool IsLowSurrogate(uint32_t code) { return code >= 0xDC00 && code <= 0xDFFF; }

// Characters that Windows refuses in a name and Linux doesn't.
bool IsRefused(uint32_t code) {
  return (code > 0 && code < 0x20) || code == '"' || code == '*' || code == ':' || code == '<' ||
         code == '>' || code == '?' || code == '\\' || code == '|';
}

bool IsMovedByte(uint32_t code) {
  return code > kMoved && code <= kMoved + 0xFF && (code >= kMoved + 0x80 || IsRefused(code - kMoved));
}

void AppendUtf8(std::string& text, uint32_t code) {
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0 | code >> 6);
    text += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0 | code >> 12);
    text += static_cast<char>(0x80 | (code >> 6 & 0x3F));
    text += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    text += static_cast<char>(0xF0 | code >> 18);
    text += static_cast<char>(0x80 | (code >> 12 & 0x3F));
    text += static_cast<char>(0x80 | (code >> 6 & 0x3F));
    text += static_cast<char>(0x80 | (code & 0x3F));
  }
}

void AppendUtf16(std::u16string& text, uint32_t code) {
  if (code < 0x10000) {
    text += static_cast<char16_t>(code);
  } else {
    text += static_cast<char16_t>(0xD7C0 + (code >> 10));
    text += static_cast<char16_t>(0xDC00 | (code & 0x3FF));
  }
}

// The character at the start of `bytes` and its length, surrogates among them; 0 if the bytes are none.
size_t DecodeOne(std::string_view bytes, uint32_t& code) {
  auto byte = [&](size_t i) { return static_cast<uint8_t>(bytes[i]); };
  uint32_t first = byte(0);
  if (first < 0x80) {
    code = first;
    return 1;
  }
  size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || bytes.size() < length) return 0;
  code = first & (0xFF >> (length + 1));
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
    code = code << 6 | (byte(i) & 0x3F);
  }
  constexpr uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  return code >= kSmallest[length] && code <= 0x10FFFF ? length : 0;
}

// As DecodeOne, and two surrogates in a row, each in three bytes, are none: the way back would write
// them as one character.
size_t DecodeStrictly(std::string_view bytes, uint32_t& code) {
  size_t length = DecodeOne(bytes, code);
  if (length != 3 || !IsHighSurrogate(code) || bytes.size() < 6) return length;
  uint32_t next = 0;
  return DecodeOne(bytes.substr(3), next) == 3 && IsLowSurrogate(next) ? 0 : length;
}

struct UpperCase {
  char16_t table[0x10000];

  UpperCase() {
    locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (!locale) Unsupported("Fold", "names beyond ASCII without the locale C.UTF-8");
    for (uint32_t unit = 0; unit < 0x10000; ++unit) {
      bool isAscii = unit < 0x80;
      uint32_t upper = unit;
      if (!isAscii) upper = towupper_l(unit, locale);
      if (isAscii && unit >= 'a' && unit <= 'z') upper = unit - 0x20;
      // The table of Windows doesn't fold into ASCII from outside, and leaves the micro sign alone.
      bool isFoldable = upper < 0x10000 && (isAscii || upper >= 0x80) && unit != 0xB5;
      table[unit] = static_cast<char16_t>(isFoldable ? upper : unit);
    }
    freelocale(locale);
  }
};

}  // namespace

std::string ToUtf8(std::u16string_view text) {
  std::string result;
  result.reserve(text.size() + text.size() / 2);
  for (size_t i = 0; i < text.size(); ++i) {
    uint32_t code = text[i];
    if (IsHighSurrogate(code) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      code = ((code - 0xD7C0) << 10) + (text[++i] & 0x3FF);
    }
    AppendUtf8(result, code);
  }
  return result;
}

std::string ToUtf8(const wchar_t* text) {
  return text ? ToUtf8(std::u16string_view(reinterpret_cast<const char16_t*>(text))) : std::string();
}

std::u16string ToUtf16(std::string_view text) {
  std::u16string result;
  result.reserve(text.size());
  while (!text.empty()) {
    uint32_t code = 0;
    size_t length = DecodeOne(text, code);
    if (length == 0) code = 0xFFFD, length = 1;
    AppendUtf16(result, code);
    text.remove_prefix(length);
  }
  return result;
}

std::string DiskName(std::u16string_view windowsName) {
  std::string result;
  result.reserve(windowsName.size() + windowsName.size() / 2);
  bool holdsBytes = false;
  size_t plain = 0;
  while (plain < windowsName.size() && windowsName[plain] < 0x80) ++plain;
  result.assign(windowsName.begin(), windowsName.begin() + plain);
  for (size_t i = plain; i < windowsName.size(); ++i) {
    uint32_t code = windowsName[i];
    if (IsMovedByte(code)) {
      result += static_cast<char>(code - kMoved);
      holdsBytes |= code >= kMoved + 0x80u;
      continue;
    }
    if (IsHighSurrogate(code) && i + 1 < windowsName.size() && IsLowSurrogate(windowsName[i + 1])) {
      code = ((code - 0xD7C0) << 10) + (windowsName[++i] & 0x3FF);
    }
    AppendUtf8(result, code);
  }
  if (holdsBytes && WindowsName(result) != windowsName) result.clear();
  return result;
}

std::u16string WindowsName(std::string_view diskName) {
  std::u16string result;
  result.reserve(diskName.size());
  while (!diskName.empty()) {
    uint32_t code = 0;
    size_t length = DecodeStrictly(diskName, code);
    if (length == 0) {
      code = kMoved + static_cast<uint8_t>(diskName[0]);
      length = 1;
    } else if (IsRefused(code)) {
      code += kMoved;
    } else if (IsMovedByte(code)) {
      // This character would lead to another file, so its bytes stand for it.
      for (size_t i = 0; i < length; ++i) {
        AppendUtf16(result, kMoved + static_cast<uint8_t>(diskName[i]));
      }
      diskName.remove_prefix(length);
      continue;
    }
    AppendUtf16(result, code);
    diskName.remove_prefix(length);
  }
  return result;
}

char16_t FoldBeyondAscii(char16_t unit) {
  static const std::unique_ptr<const UpperCase> upper = std::make_unique<UpperCase>();
  return upper->table[unit];
}

std::u16string Fold(std::u16string_view text) {
  std::u16string result(text);
  for (char16_t& unit : result) unit = FoldUnit(unit);
  return result;
}

std::string FoldUtf8(std::string_view text) { return ToUtf8(Fold(ToUtf16(text))); }

bool SameText(std::string_view a, std::string_view b) { return FoldUtf8(a) == FoldUtf8(b); }

bool SameName(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i] && FoldUnit(a[i]) != FoldUnit(b[i])) return false;
  }
  return true;
}

}  // namespace machine
