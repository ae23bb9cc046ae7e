// error_texts.cc
//
// What the system says about an error: the codes that the layer's calls give.
#include <windows.h>

#include <algorithm>
#include <string>

#include "machine/call.h"
#include "machine/names.h"

using namespace machine;

namespace {

struct ErrorText {
  DWORD error;
  const char* text;
};

constexpr ErrorText kErrorTexts[] = {
    {ERROR_SUCCESS, "The operation completed successfully."},
    {ERROR_INVALID_FUNCTION, "Incorrect function."},
    {ERROR_FILE_NOT_FOUND, "The system cannot find the file specified."},
    {ERROR_PATH_NOT_FOUND, "The system cannot find the path specified."},
    {ERROR_TOO_MANY_OPEN_FILES, "The system cannot open the file."},
    {ERROR_ACCESS_DENIED, "Access is denied."},
    {ERROR_INVALID_HANDLE, "The handle is invalid."},
    {ERROR_NOT_ENOUGH_MEMORY, "Not enough memory resources are available to process this command."},
    {ERROR_INVALID_DATA, "The data is invalid."},
    {ERROR_OUTOFMEMORY, "Not enough memory resources are available to complete this operation."},
    {ERROR_INVALID_DRIVE, "The system cannot find the drive specified."},
    {ERROR_CURRENT_DIRECTORY, "The directory cannot be removed."},
    {ERROR_NOT_SAME_DEVICE, "The system cannot move the file to a different disk drive."},
    {ERROR_NO_MORE_FILES, "There are no more files."},
    {ERROR_WRITE_PROTECT, "The media is write protected."},
    {ERROR_NOT_READY, "The device is not ready."},
    {ERROR_CRC, "Data error (cyclic redundancy check)."},
    {ERROR_SEEK, "The drive cannot locate a specific area or track on the disk."},
    {ERROR_SECTOR_NOT_FOUND, "The drive cannot find the sector requested."},
    {ERROR_WRITE_FAULT, "The system cannot write to the specified device."},
    {ERROR_READ_FAULT, "The system cannot read from the specified device."},
    {ERROR_GEN_FAILURE, "A device attached to the system is not functioning."},
    {ERROR_SHARING_VIOLATION,
     "The process cannot access the file because it is being used by another process."},
    {ERROR_LOCK_VIOLATION,
     "The process cannot access the file because another process has locked a portion of the file."},
    {ERROR_HANDLE_EOF, "Reached the end of the file."},
    {ERROR_HANDLE_DISK_FULL, "The disk is full."},
    {ERROR_NOT_SUPPORTED, "The request is not supported."},
    {ERROR_BAD_NETPATH, "The network path was not found."},
    {ERROR_DEV_NOT_EXIST, "The specified network resource or device is no longer available."},
    {ERROR_BAD_NET_NAME, "The network name cannot be found."},
    {ERROR_FILE_EXISTS, "The file exists."},
    {ERROR_CANNOT_MAKE, "The directory or file cannot be created."},
    {ERROR_INVALID_PARAMETER, "The parameter is incorrect."},
    {ERROR_BROKEN_PIPE, "The pipe has been ended."},
    {ERROR_OPEN_FAILED, "The system cannot open the device or file specified."},
    {ERROR_BUFFER_OVERFLOW, "The file name is too long."},
    {ERROR_DISK_FULL, "There is not enough space on the disk."},
    {ERROR_CALL_NOT_IMPLEMENTED, "This function is not supported on this system."},
    {ERROR_INSUFFICIENT_BUFFER, "The data area passed to a system call is too small."},
    {ERROR_INVALID_NAME, "The filename, directory name, or volume label syntax is incorrect."},
    {ERROR_INVALID_LEVEL, "The system call level is not correct."},
    {ERROR_MOD_NOT_FOUND, "The specified module could not be found."},
    {ERROR_PROC_NOT_FOUND, "The specified procedure could not be found."},
    {ERROR_NEGATIVE_SEEK, "An attempt was made to move the file pointer before the beginning of the file."},
    {ERROR_DIR_NOT_EMPTY, "The directory is not empty."},
    {ERROR_NOT_LOCKED, "The segment is already unlocked."},
    {ERROR_BAD_PATHNAME, "The specified path is invalid."},
    {ERROR_LOCK_FAILED, "Unable to lock a region of a file."},
    {ERROR_BUSY, "The requested resource is in use."},
    {ERROR_ALREADY_EXISTS, "Cannot create a file when that file already exists."},
    {ERROR_FILENAME_EXCED_RANGE, "The filename or extension is too long."},
    {ERROR_FILE_TOO_LARGE, "The file size exceeds the limit allowed and cannot be saved."},
    {ERROR_MORE_DATA, "More data is available."},
    {ERROR_NO_MORE_ITEMS, "No more data is available."},
    {ERROR_DIRECTORY, "The directory name is invalid."},
    {ERROR_DELETE_PENDING, "The file cannot be opened because it is in the process of being deleted."},
    {ERROR_NOACCESS, "Invalid access to memory location."},
    {ERROR_OPERATION_ABORTED,
     "The I/O operation has been aborted because of either a thread exit or an application request."},
    {ERROR_STACK_OVERFLOW, "Recursion too deep; the stack overflowed."},
    {ERROR_INVALID_FLAGS, "Invalid flags."},
    {ERROR_UNRECOGNIZED_VOLUME,
     "The volume does not contain a recognized file system. Please make sure that all required file system "
     "drivers are loaded and that the volume is not corrupted."},
    {ERROR_FILE_INVALID,
     "The volume for a file has been externally altered so that the opened file is no longer valid."},
    {ERROR_BADDB, "The configuration registry database is corrupt."},
    {ERROR_BADKEY, "The configuration registry key is invalid."},
    {ERROR_CANTOPEN, "The configuration registry key could not be opened."},
    {ERROR_CANTREAD, "The configuration registry key could not be read."},
    {ERROR_CANTWRITE, "The configuration registry key could not be written."},
    {ERROR_REGISTRY_CORRUPT,
     "The registry is corrupted. The structure of one of the files containing registry data is corrupted, or "
     "the system's memory image of the file is corrupted, or the file could not be recovered because the "
     "alternate copy or log was absent or corrupted."},
    {ERROR_NOT_REGISTRY_FILE,
     "The system has attempted to load or restore a file into the registry, but the specified file is not in "
     "a registry file format."},
    {ERROR_KEY_DELETED, "Illegal operation attempted on a registry key that has been marked for deletion."},
    {ERROR_IO_DEVICE, "The request could not be performed because of an I/O device error."},
    {ERROR_TOO_MANY_LINKS,
     "An attempt was made to create more links on a file than the file system supports."},
    {ERROR_OLD_WIN_VERSION, "The specified program requires a newer version of Windows."},
    {ERROR_NO_ASSOCIATION, "No application is associated with the specified file for this operation."},
    {ERROR_NO_UNICODE_TRANSLATION,
     "No mapping for the Unicode character exists in the target multi-byte code page."},
    {ERROR_NOT_FOUND, "Element not found."},
    {ERROR_CANCELLED, "The operation was canceled by the user."},
    {ERROR_REQUEST_ABORTED, "The request was aborted."},
    {ERROR_NOT_ALL_ASSIGNED, "Not all privileges or groups referenced are assigned to the caller."},
    {ERROR_NO_TOKEN, "An attempt was made to reference a token that does not exist."},
    {ERROR_NO_SUCH_LOGON_SESSION,
     "A specified logon session does not exist. It may already have been terminated."},
    {ERROR_NO_SUCH_PRIVILEGE, "A specified privilege does not exist."},
    {ERROR_PRIVILEGE_NOT_HELD, "A required privilege is not held by the client."},
    {ERROR_USER_EXISTS, "The specified account already exists."},
    {ERROR_NO_SUCH_USER, "The specified account does not exist."},
    {ERROR_LOGON_FAILURE, "The user name or password is incorrect."},
    {ERROR_NONE_MAPPED, "No mapping between account names and security IDs was done."},
    {ERROR_INVALID_ACL, "The access control list (ACL) structure is invalid."},
    {ERROR_INVALID_SID, "The security ID structure is invalid."},
    {ERROR_INVALID_SECURITY_DESCR, "The security descriptor structure is invalid."},
    {ERROR_INVALID_OWNER, "This security ID may not be assigned as the owner of this object."},
    {ERROR_DISK_CORRUPT, "The disk structure is corrupted and unreadable."},
    {ERROR_FILE_CORRUPT, "The file or directory is corrupted and unreadable."},
    {ERROR_NO_SYSTEM_RESOURCES, "Insufficient system resources exist to complete the requested service."},
    {ERROR_NOT_A_REPARSE_POINT, "The file or directory is not a reparse point."},
    {ERROR_INVALID_REPARSE_DATA, "The data present in the reparse point buffer is invalid."},
    {ERROR_CANT_ACCESS_FILE, "The file cannot be accessed by the system."},
    {ERROR_CANT_RESOLVE_FILENAME, "The name of the file cannot be resolved by the system."},
};

const char* TextOf(DWORD error) {
  const auto* found = std::find_if(std::begin(kErrorTexts), std::end(kErrorTexts),
                                   [error](const ErrorText& entry) { return entry.error == error; });
  return found == std::end(kErrorTexts) ? nullptr : found->text;
}

}  // namespace

DWORD WINAPI FormatMessageW(DWORD flags, const void*, DWORD message, DWORD, wchar_t* buffer, DWORD room,
                            __ms_va_list*) {
  EnterCall();
  constexpr DWORD kKnown = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                           FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_MAX_WIDTH_MASK;
  if (flags & ~kKnown || !(flags & FORMAT_MESSAGE_FROM_SYSTEM)) {
    Unsupported("FormatMessageW", "anything but the system's own texts");
  }
  const char* found = TextOf(message);
  if (!found) return Fail(ERROR_MR_MID_NOT_FOUND);
  // With a width that leaves the lines alone, Windows puts a blank in the place of the line end.
  std::u16string text = ToUtf16(found);
  text += (flags & FORMAT_MESSAGE_MAX_WIDTH_MASK) == FORMAT_MESSAGE_MAX_WIDTH_MASK ? u" " : u"\r\n";
  if (flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) {
    void* block = LocalAlloc(0, std::max<SIZE_T>(text.size() + 1, room) * sizeof(wchar_t));
    if (!block) return 0;
    *reinterpret_cast<void**>(buffer) = block;
    buffer = static_cast<wchar_t*>(block);
  } else if (room <= text.size()) {
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  std::copy_n(AsWide(text), text.size() + 1, buffer);
  return static_cast<DWORD>(text.size());
}
