#include "operations/held_way.h"

#include "foundation/split_list.h"
#include "operations/drive_presence.h"
#include "operations/walk_path.h"

HeldWay::Result HeldWay::Hold(const wchar_t* root, const wchar_t* relative, bool makes) {
  WalkPath path(root);
  SplitList names;
  names.Split(relative, L"\\", true);
  for (uint32_t i = 0; i < names.count; i++) {
    if (names.pieces[i][0] == 0) continue;
    if (!path.Push(names.pieces[i])) {
      SetLastError(ERROR_FILENAME_EXCED_RANGE);
      return Result::kFailed;
    }
    Result result = HoldStep(path.CStr(), makes);
    if (result != Result::kHeld) return result;
  }
  return Result::kHeld;
}

DWORD HeldWay::ErrorOf(Result result) {
  return result == Result::kLink ? DWORD{ERROR_CANT_ACCESS_FILE} : GetLastError();
}

HeldWay::Result HeldWay::HoldStep(const wchar_t* path, bool makes) {
  HeldDirectory step;
  HoldResult result = step.Open(path);
  DWORD error = result == HoldResult::kFailed ? GetLastError() : DWORD{NO_ERROR};
  if (makes && IsMissingOnItsDrive(path, error)) {
    if (!CreateDirectoryW(path, nullptr) && GetLastError() != ERROR_ALREADY_EXISTS) return Result::kFailed;
    result = step.Open(path);
    error = GetLastError();
  }
  if (result == HoldResult::kLink) return Result::kLink;
  if (result == HoldResult::kFailed) {
    if (IsMissingOnItsDrive(path, error)) return Result::kMissing;
    SetLastError(error);
    return Result::kFailed;
  }
  steps_.push_back(std::move(step));
  return Result::kHeld;
}
