// hive_file.h
//
// The file form of a hive: the empty one that new hives begin with, and the checks that a file must
// pass before libhivex sees it.
#pragma once
#include <windows.h>

#include <cstdint>
#include <string>

namespace machine {

// The bytes of a hive that holds only its root key: a base block and one bin of 4,096 bytes. The root
// gives administrators and the system all rights, and everyone the right to read.
std::string EmptyHive();

// Looks at the base block of an open file of `size` bytes: ERROR_SUCCESS; ERROR_NOT_REGISTRY_FILE for
// something else than a hive; ERROR_BADDB for a hive that is damaged or cut off; or the error of the
// read. The file's position doesn't matter and doesn't change.
DWORD CheckHiveFile(int file, uint64_t size);

// Whether Windows had closed the hive when the file was written. If not, the newest changes are in its
// log files, which aren't read here.
bool IsHiveClean(int file);

}  // namespace machine
