// call.cc
#include "machine/call.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace machine {

void Unsupported(const char* call, const char* what) {
  std::fprintf(stderr, "norvane: %s: not available on this system: %s\n", call, what);
  std::abort();
}

DWORD ErrorFromErrno(int error) {
  switch (error) {
    case 0:
      return ERROR_SUCCESS;
    case ENOENT:
      return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
      return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EISDIR:
    case ETXTBSY:
      return ERROR_ACCESS_DENIED;
    case EROFS:
      return ERROR_WRITE_PROTECT;
    case EEXIST:
      return ERROR_ALREADY_EXISTS;
    case ENOTEMPTY:
      return ERROR_DIR_NOT_EMPTY;
    case ENOSPC:
    case EDQUOT:
      return ERROR_DISK_FULL;
    case EFBIG:
      return ERROR_FILE_TOO_LARGE;
    case ENAMETOOLONG:
      return ERROR_FILENAME_EXCED_RANGE;
    case ELOOP:
      return ERROR_CANT_RESOLVE_FILENAME;
    case EXDEV:
      return ERROR_NOT_SAME_DEVICE;
    case EMFILE:
    case ENFILE:
      return ERROR_TOO_MANY_OPEN_FILES;
    case ENOMEM:
      return ERROR_NOT_ENOUGH_MEMORY;
    case EIO:
      return ERROR_CRC;  // what Windows says of a bad sector
    case EBUSY:
      return ERROR_SHARING_VIOLATION;
    case EBADF:
      return ERROR_INVALID_HANDLE;
    case EINVAL:
      return ERROR_INVALID_PARAMETER;
    case EOPNOTSUPP:
    case ENOSYS:
      return ERROR_NOT_SUPPORTED;
    case ENODEV:
    case ENXIO:
    case ENOTCONN:
    case ESTALE:
      return ERROR_NOT_READY;
    case EMLINK:
      return ERROR_TOO_MANY_LINKS;
    case ERANGE:
      return ERROR_INSUFFICIENT_BUFFER;
    default:
      return ERROR_GEN_FAILURE;
  }
}

}  // namespace machine
