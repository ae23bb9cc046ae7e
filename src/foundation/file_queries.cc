#include "foundation/file_queries.h"

#include "foundation/directory_enumerator.h"
#include "foundation/file_object.h"
#include "foundation/unique_handle.h"

uint64_t GetFileSize64(const wchar_t* path) {
  const WString fitting = PathForCalls(path);
  const UniqueFile file(CreateFileW(fitting.CStr(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, 0, nullptr));
  LARGE_INTEGER size;
  if (file && GetFileSizeEx(file.Get(), &size)) return static_cast<uint64_t>(size.QuadPart);
  WIN32_FIND_DATAW entry;
  const UniqueFind search(FindFirstFileW(fitting.CStr(), &entry));
  if (!search) return 0;
  return static_cast<uint64_t>(entry.nFileSizeHigh) << 32 | entry.nFileSizeLow;
}

bool ResolveFoundName(wchar_t* buffer) {
  DirectoryEnumerator search;
  if (!search.First(buffer, kSkipReparsePoints)) return false;
  WString found(buffer);
  found.ParentPath(true);
  found.Append(search.data.cFileName);
  const int32_t units = found.Length();
  if (units >= kFoundNameCapacity) return false;
  CopyMemory(buffer, found.CStr(), (static_cast<size_t>(units) + 1) * sizeof(wchar_t));
  return true;
}
