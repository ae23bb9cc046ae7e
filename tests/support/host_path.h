// host_path.h
//
// Where a path of the system under test lies for a program that doesn't go through its calls.
#pragma once
#include <string>

#include "foundation/wstring.h"

// The path in UTF-8, for the standard library. On Linux the file of the machine folder; spellings must
// be exact.
std::string HostPath(const WString& path);
