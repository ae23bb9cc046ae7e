// command_line.h
//
// What the arguments ask the program to begin with.
#pragma once
#include "core/app_object.h"

// Reads the arguments (without the program's name). A backup info file among them goes into
// `pendingPath`, the last one if there are several; `pendingPath` stays as it was if there is none.
// Unknown switches and files that don't exist are passed over.
AppObject::StartResult ParseCommandLine(const wchar_t* commandLine, WString& pendingPath);
