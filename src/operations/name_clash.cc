#include "operations/name_clash.h"

#include "foundation/directory_enumerator.h"
#include "operations/copy_failure.h"

namespace {

// The unit without its case. Which letters are one but for their case, only the system knows; so most
// alphabets beyond ASCII are one letter here, but those that whole folders of names are made of.
wchar_t Fold(wchar_t unit) {
  if (unit >= L'a' && unit <= L'z') return static_cast<wchar_t>(unit - L'a' + L'A');
  if (unit < 0x80) return unit;
  if (unit >= 0x410 && unit <= 0x44f) return static_cast<wchar_t>(0x410 + (unit & 0x1f));  // Cyrillic
  const bool isWithoutCase = (unit >= 0x2e80 && unit < 0xa640) || (unit >= 0xac00 && unit < 0xff00);
  return isWithoutCase ? unit : wchar_t{0x80};
}

uint32_t HashWithoutCase(const wchar_t* name) {
  uint32_t hash = 2166136261u;  // FNV-1a
  for (; *name; name++) hash = (hash ^ Fold(*name)) * 16777619u;
  return hash != 0 ? hash : 1;
}

bool IsSameName(const wchar_t* a, const wchar_t* b, bool ignoresCase) {
  return CompareStringOrdinal(a, -1, b, -1, ignoresCase) == CSTR_EQUAL;
}

// Short names have one, and hardly any others.
bool HasTilde(const wchar_t* name) {
  while (*name && *name != L'~') name++;
  return *name != 0;
}

// Whether the source has the name in another case, too.
bool HasTwin(const FileInHand& file) {
  const wchar_t* name = file.entry.cFileName;
  WString pattern(file.source.CStr());
  pattern.buffer[pattern.Length() - 1] = L'?';
  DirectoryEnumerator found;
  for (bool has = found.First(pattern.CStr(), 0); has; has = found.Next()) {
    const wchar_t* other = found.data.cFileName;
    if (IsSameName(name, other, true) && !IsSameName(name, other, false)) return true;
  }
  return false;
}

}  // namespace

bool SeenNames::Put(uint32_t hash) {
  size_t slot = hash & (slots_.size() - 1);
  while (slots_[slot] != 0) {
    if (slots_[slot] == hash) return false;
    slot = (slot + 1) & (slots_.size() - 1);
  }
  slots_[slot] = hash;
  count_++;
  return true;
}

bool SeenNames::Add(const wchar_t* name) {
  constexpr size_t kFirstSlots = 64;
  if (count_ * size_t{4} >= slots_.size() * 3) {
    std::vector<uint32_t> old(slots_.empty() ? kFirstSlots : slots_.size() * 2);
    old.swap(slots_);
    count_ = 0;
    for (uint32_t hash : old) {
      if (hash != 0) Put(hash);
    }
  }
  return !Put(HashWithoutCase(name));
}

bool IsClash(const FileInHand& file, const OperationContext& context) {
  if (!file.mayHaveTwin && !HasTilde(file.entry.cFileName)) return false;
  DirectoryEnumerator standing;
  if (!standing.First(file.target.CStr(), 0)) return false;
  if (!IsSameName(file.entry.cFileName, standing.data.cFileName, true)) return true;
  if (!file.mayHaveTwin) return false;
  // The other one may have been moved from the source to there.
  const bool isSpelledSo = IsSameName(file.entry.cFileName, standing.data.cFileName, false);
  return (context.moveFiles && !isSpelledSo) || HasTwin(file);
}

void ReportClash(const FileInHand& file, OperationContext& context) {
  if (context.moveFiles) {
    ReportTargetFailure(context, kCannotMove, file.source.CStr(), ERROR_FILE_EXISTS);
  } else {
    ReportTargetFailure(context, kCannotOpenTarget, file.target.CStr(), ERROR_FILE_EXISTS);
  }
}
