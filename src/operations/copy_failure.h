// copy_failure.h
//
// What becomes of an item that couldn't be copied: a line in the application log, a count, and a word to
// whoever looks on.
#pragma once
#include "operations/operation_context.h"

// The log's texts; a path follows each.
inline constexpr wchar_t kCannotMakeDirectory[] = L"Error! Could not create destination directory: ";
inline constexpr wchar_t kCannotReadDirectory[] = L"Error! Could not read source directory: ";
inline constexpr wchar_t kCannotMove[] = L"Error! Could not move file: ";
inline constexpr wchar_t kCannotCopy[] = L"Error! Could not copy file: ";
inline constexpr wchar_t kCannotOpenSource[] = L"Error! Could not open source file: ";
inline constexpr wchar_t kCannotOpenTarget[] = L"Error! Could not open destination file: ";
inline constexpr wchar_t kCannotSetAttributes[] = L"Error! Could not set attributes and times of file: ";
inline constexpr wchar_t kCannotRead[] = L"Could not read local file: ";
inline constexpr wchar_t kCannotWrite[] = L"Could not write local file: ";
inline constexpr wchar_t kCannotFindProfile[] = L"Error! Could not get profile path for user: ";
inline constexpr wchar_t kCannotFindFolder[] = L"Error! Could not find user folder: ";
inline constexpr wchar_t kCannotLoadHive[] = L"Error! Could not load user hive: ";
inline constexpr wchar_t kCannotCreateAccount[] = L"Error! Could not create user account: ";
inline constexpr wchar_t kCannotSetGroup[] = L"Error! Could not put user account into its group: ";
inline constexpr wchar_t kProtectedFolder[] = L"Error! Left out protected user folder: ";
inline constexpr wchar_t kProtectedPlace[] = L"Error! Left out protected folder: ";
inline constexpr wchar_t kSourceIsTarget[] = L"Error! Source and destination are in each other: ";

// Logs `text` and the path without its long path prefix, counts it in `failures`, and tells the
// observer. `error` is the system's code, 0 where there is none.
void ReportFailure(OperationContext& context, const wchar_t* text, const wchar_t* path, DWORD error);

// The same for an entry whose path is too long to be formed.
void ReportLongPath(OperationContext& context, const wchar_t* text, const wchar_t* folder,
                    const wchar_t* name);

// The same for a call that writes to the target: a full disk is remembered.
void ReportTargetFailure(OperationContext& context, const wchar_t* text, const wchar_t* path, DWORD error);
