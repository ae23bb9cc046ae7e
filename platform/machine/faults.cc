// faults.cc
#include "machine/faults.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>

#include "machine/names.h"
#include "machine/settings_text.h"

namespace machine {

std::atomic<bool> faultsAreSet{false};

namespace {

struct FaultState {
  std::mutex lock;
  FaultPlan plan;
  uint64_t calls = 0;
  uint64_t changes = 0;
};

FaultState& State() {
  static FaultState& state = *new FaultState;
  return state;
}

// A call that a `before` function makes itself is no matching call.
thread_local bool isInsideBefore = false;

bool MatchesPattern(std::string_view pattern, std::string_view text) {
  while (!pattern.empty() && pattern[0] != '*') {
    if (text.empty() || pattern[0] != text[0]) return false;
    pattern.remove_prefix(1);
    text.remove_prefix(1);
  }
  if (pattern.empty()) return text.empty();
  pattern.remove_prefix(1);
  if (pattern.empty()) return true;
  for (size_t i = 0; i <= text.size(); ++i) {
    if (MatchesPattern(pattern, text.substr(i))) return true;
  }
  return false;
}

bool Matches(const FaultPlan& plan, std::string_view call, std::string_view path) {
  if (!plan.call.empty() && plan.call != call) return false;
  return plan.path.empty() || MatchesPattern(FoldUtf8(plan.path), FoldUtf8(path));
}

bool ReadNumber(const SettingsSection& section, const char* key, uint64_t& number, std::string* error) {
  const std::string* text = section.Find(key);
  if (!text) return true;
  char* end = nullptr;
  number = std::strtoull(text->c_str(), &end, 0);
  if (!text->empty() && *end == 0) return true;
  *error = std::string("faults.ini: ") + key + " is no number: " + *text;
  return false;
}

}  // namespace

void SetFaults(const FaultPlan& plan) {
  FaultState& state = State();
  std::lock_guard hold(state.lock);
  state.plan = plan;
  state.calls = state.changes = 0;
  faultsAreSet = true;
}

void ClearFaults() { faultsAreSet = false; }

uint64_t FaultCalls() {
  std::lock_guard hold(State().lock);
  return State().calls;
}

uint64_t FaultChanges() {
  std::lock_guard hold(State().lock);
  return State().changes;
}

bool FaultHits(const char* call, std::string_view path) {
  if (!FaultsAreSet() || isInsideBefore) return false;
  FaultState& state = State();
  std::unique_lock hold(state.lock);
  if (!Matches(state.plan, call, path)) return false;
  uint64_t number = ++state.calls;
  bool isHit = state.plan.nth != 0 &&
               (number == state.plan.nth || (state.plan.andAllLater && number > state.plan.nth));
  DWORD error = state.plan.error;
  auto before = state.plan.before;
  hold.unlock();
  if (before) {
    isInsideBefore = true;
    before(call, path);
    isInsideBefore = false;
  }
  if (isHit) SetLastError(error);
  return isHit;
}

bool FaultHitsChange(const char* call, std::string_view path) {
  CountChange();
  return FaultHits(call, path);
}

void CountChange() {
  if (!FaultsAreSet() || isInsideBefore) return;
  FaultState& state = State();
  std::lock_guard hold(state.lock);
  if (++state.changes == state.plan.endAtChange) _exit(99);
}

uint64_t TakeDiskSpace(uint64_t bytes) {
  if (!FaultsAreSet()) return bytes;
  FaultState& state = State();
  std::lock_guard hold(state.lock);
  if (state.plan.bytesLeft < 0) return bytes;
  uint64_t taken = std::min(bytes, static_cast<uint64_t>(state.plan.bytesLeft));
  state.plan.bytesLeft -= static_cast<int64_t>(taken);
  return taken;
}

uint64_t DiskSpaceLeft() {
  if (!FaultsAreSet()) return UINT64_MAX;
  std::lock_guard hold(State().lock);
  int64_t left = State().plan.bytesLeft;
  return left < 0 ? UINT64_MAX : static_cast<uint64_t>(left);
}

bool LoadFaults(const std::string& file, std::string* error) {
  if (access(file.c_str(), F_OK) != 0) return true;
  SettingsText text;
  if (!text.Read(file, error)) return false;
  const SettingsSection* section = text.Find("Faults");
  if (!section) return true;
  FaultPlan plan;
  uint64_t all = 0, code = ERROR_IO_DEVICE, bytes = UINT64_MAX;
  if (const std::string* call = section->Find("Call")) plan.call = *call;
  if (const std::string* path = section->Find("Path")) plan.path = *path;
  if (!ReadNumber(*section, "Nth", plan.nth, error) || !ReadNumber(*section, "AndAllLater", all, error) ||
      !ReadNumber(*section, "Error", code, error) || !ReadNumber(*section, "BytesLeft", bytes, error) ||
      !ReadNumber(*section, "EndAtChange", plan.endAtChange, error)) {
    return false;
  }
  plan.andAllLater = all != 0;
  plan.error = static_cast<DWORD>(code);
  plan.bytesLeft = bytes == UINT64_MAX ? -1 : static_cast<int64_t>(bytes);
  SetFaults(plan);
  return true;
}

}  // namespace machine
