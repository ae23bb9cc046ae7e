// processes.h
//
// Starting and ending other programs, asking about them, and acting in their name. All of it may be
// called from any thread, and shows nothing.
#pragma once
#include <windows.h>

#include <cstdint>

#include "foundation/wstring.h"

enum : uint32_t {
  kProcessWait = 1,                // RunProcess: until it ends
  kProcessWithoutRedirection = 2,  // a 32-bit process on a 64-bit system starts from the real System32
};

// Starts a program with its window shown. Null or empty texts count as absent. The caller closes the
// handle. Null on failure, with the reason in GetLastError().
HANDLE StartProcess(const wchar_t* application, const wchar_t* commandLine, const wchar_t* workingFolder,
                    uint32_t options);

// With kProcessWait the exit code, or -1 if it couldn't be started; windows of the calling thread stay
// alive meanwhile. Without it the process id, or 0.
int32_t RunProcess(const wchar_t* application, const wchar_t* commandLine, const wchar_t* workingFolder,
                   uint32_t options);

// Opens a file or folder as a double click does. The id of the program that it started, 1 if the
// system gave none, 0 on failure.
uint32_t ShellOpen(const wchar_t* file);

// Whether a process (null: this one) is a 32-bit one on a 64-bit system.
bool IsWow64(HANDLE process = nullptr);

// Shows the calling thread the real System32 instead of SysWOW64. True if it was changed; `saved` then
// goes to RestoreRedirection on the same thread, soon, since the loader is led astray meanwhile.
bool DisableRedirection(void*& saved);
void RestoreRedirection(void* saved);

constexpr int kImagePathCapacity = 4096;

// The path of a process's program, into a buffer of kImagePathCapacity units. False, with an empty
// text, if it can't be had.
bool GetProcessImagePath(uint32_t processId, wchar_t* output);

// Turns "\SystemRoot\…" and "\??\…", as the kernel names files, into a path.
void FromKernelPath(WString& path);

// Whether a process of that id runs. Only 4, the system's own, counts below 5, and it isn't asked.
bool IsProcessAlive(uint32_t processId);

// Ends a process for good, harder at each step. Takes up to 1.5 seconds.
void TerminateProcessHard(uint32_t processId);

// The first top-level window of a process that can be seen, or null.
HWND FindVisibleWindow(uint32_t processId);

// The calling thread takes on the identity of the first process whose program has that file name. Gives
// the token, which the caller closes after RevertToSelf, or null if the thread stayed as it was.
HANDLE ImpersonateProcess(const wchar_t* fileName);
