// file_open.cc
#include "machine/call.h"
#include "machine/open_file.h"

using namespace machine;

HANDLE WINAPI CreateFileW(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                          DWORD disposition, DWORD flagsAndAttributes, HANDLE) {
  EnterCall();
  if (security && security->lpSecurityDescriptor) {
    Unsupported("CreateFileW", "a security descriptor for the new file");
  }
  constexpr DWORD kFlags = 0xFFFF0000;
  if (flagsAndAttributes & FILE_FLAG_OVERLAPPED) Unsupported("CreateFileW", "FILE_FLAG_OVERLAPPED");
  bool isKnown = disposition >= CREATE_NEW && disposition <= TRUNCATE_EXISTING;
  bool isWhole = disposition != TRUNCATE_EXISTING || (access & (GENERIC_WRITE | GENERIC_ALL));
  if (!isKnown || !isWhole) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_HANDLE_VALUE;
  }
  OpenRequest request;
  request.access = access;
  request.share = share;
  request.disposition = disposition;
  request.flags = flagsAndAttributes & kFlags;
  request.attributes = flagsAndAttributes & ~kFlags;
  Location location;
  WindowsPath path;
  Effect effect = disposition == OPEN_EXISTING ? Effect::kReads : Effect::kChanges;
  bool isLocated = ParsePath(name, path) && !HasFault("CreateFileW", effect, path) &&
                   FindParent(std::move(path), location);
  std::shared_ptr<File> file = isLocated ? OpenFileAt(std::move(location), request) : nullptr;
  if (!file) return INVALID_HANDLE_VALUE;
  return AddHandle(std::move(file));
}

BOOL WINAPI CloseHandle(HANDLE handle) {
  EnterCall();
  return RemoveHandle(handle);
}
