// file_facts.cc
//
// Size, times and attributes, by handle and by path.
#include <cerrno>

#include "machine/access_check.h"
#include "machine/call.h"
#include "machine/faults.h"
#include "machine/open_files.h"
#include "machine/path_resolution.h"
#include "machine/reparse_points.h"

using namespace machine;

namespace {

std::shared_ptr<File> AskedFile(HANDLE handle, const char* call, Effect effect) {
  std::shared_ptr<File> file = FileOf(handle);
  if (file && FaultsAreSet() && HasFault(call, effect, file->Path())) return nullptr;
  return file;
}

// What is at a path, without following a link at its end.
bool FactsOfPath(const char* call, const wchar_t* path, FileFacts& facts) {
  Location location;
  if (!Locate(call, Effect::kReads, path, location) || !LookUp(location, Links::kKeep, facts) ||
      !MayReadAttributes(location)) {
    return false;
  }
  DescribeReparsePoint(location, facts);
  bool isDirectory = facts.attributes & FILE_ATTRIBUTE_DIRECTORY;
  return isDirectory || !location.path.wantsDirectory || Fail(ERROR_INVALID_NAME);
}

}  // namespace

BOOL WINAPI GetFileSizeEx(HANDLE handle, PLARGE_INTEGER size) {
  EnterCall();
  std::shared_ptr<File> file = AskedFile(handle, "GetFileSizeEx", Effect::kReads);
  if (!file) return FALSE;
  FileFacts facts = file->facts;
  if (!file->isSizeFixed && !ReadStatus(file->Get(), "", facts)) return Fail(ErrorFromErrno(errno));
  size->QuadPart = static_cast<LONGLONG>(facts.size);
  return TRUE;
}

BOOL WINAPI SetFileTime(HANDLE handle, const FILETIME* created, const FILETIME* accessed,
                        const FILETIME* written) {
  EnterCall();
  std::shared_ptr<File> file = AskedFile(handle, "SetFileTime", Effect::kChanges);
  if (!file || !IsWritable(file->Drive())) return FALSE;
  if (!(file->access & FILE_WRITE_ATTRIBUTES)) return Fail(ERROR_ACCESS_DENIED);
  // All ones ask the file system to leave a time alone from now on; it is left alone here and now.
  auto ticks = [](const FILETIME* time) {
    uint64_t value = time ? FromFileTime(*time) : 0;
    return value == UINT64_MAX ? 0 : value;
  };
  bool isDone = WriteTimes(file->Get(), "", ticks(accessed), ticks(written));
  if (isDone && ticks(created) != 0) {
    FileFacts facts;
    isDone = ReadFacts(file->Get(), "", facts) &&
             WriteAttributes(file->Get(), "", facts, facts.attributes, ticks(created));
    if (isDone) file->facts.created = ticks(created);
  }
  return isDone || Fail(ErrorFromErrno(errno));
}

DWORD WINAPI GetFileAttributesW(LPCWSTR path) {
  EnterCall();
  FileFacts facts;
  return FactsOfPath("GetFileAttributesW", path, facts) ? facts.attributes : INVALID_FILE_ATTRIBUTES;
}

BOOL WINAPI GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID result) {
  EnterCall();
  if (level != GetFileExInfoStandard) return Fail(ERROR_INVALID_PARAMETER);
  FileFacts facts;
  if (!FactsOfPath("GetFileAttributesExW", path, facts)) return FALSE;
  auto* data = static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(result);
  data->dwFileAttributes = facts.attributes;
  data->ftCreationTime = ToFileTime(facts.created);
  data->ftLastAccessTime = ToFileTime(facts.accessed);
  data->ftLastWriteTime = ToFileTime(facts.written);
  data->nFileSizeHigh = static_cast<DWORD>(facts.size >> 32);
  data->nFileSizeLow = static_cast<DWORD>(facts.size);
  return TRUE;
}

BOOL WINAPI SetFileAttributesW(LPCWSTR path, DWORD attributes) {
  EnterCall();
  Location location;
  FileFacts facts;
  if (!Locate("SetFileAttributesW", Effect::kChanges, path, location) ||
      !LookUp(location, Links::kKeep, facts) || !MayOpen(location, FILE_WRITE_ATTRIBUTES, false)) {
    return FALSE;
  }
  if (facts.IsDirectory() && (attributes & FILE_ATTRIBUTE_TEMPORARY)) return Fail(ERROR_INVALID_PARAMETER);
  uint32_t kept = facts.attributes & FILE_ATTRIBUTE_REPARSE_POINT;
  attributes = (attributes & kSettableAttributes) | kept;
  if (attributes == (facts.attributes & (kSettableAttributes | kept))) return TRUE;
  return WriteAttributes(location.parent, location.name.c_str(), facts, attributes, facts.created) ||
         Fail(ErrorFromErrno(errno));
}
