// restore_start.h
//
// The steps between a person's choice of a source and a running restore. The screens and the console
// take the same ones.
#pragma once
#include "foundation/ini_document.h"
#include "operations/restore_selection.h"

// Whether the root of another installation is that of the running system, by whatever way it is spelled.
bool IsSystemRoot(const wchar_t* root, const wchar_t* systemDrive);
WString SystemRootText(const wchar_t* root);  // what a person is told then

// Whether the root of another installation is on the system's drive, so that its files can be moved.
bool IsOnSystemDrive(const wchar_t* root, const wchar_t* systemDrive);

// Where `folder`, which lies below `root`, is offered to go: to the same place on the system's drive.
WString OfferedTarget(const wchar_t* root, const wchar_t* folder, const wchar_t* systemDrive);

// Opens the info file that keeps the selection in the root of another installation; without one the
// document is empty and has the path of the one to be made. False if it can't be kept there, because
// something else has its place; the document is empty then, too.
bool OpenRootDocument(const wchar_t* root, IniDocument& document);

// Writes the selection into the document and, if `isKept`, saves that. False if it couldn't be saved, with
// the reason in GetLastError(): a set or a disk that can't be written is restored all the same, from the
// document in memory.
bool StartRestore(const RestoreRoot& root, const RestoreSelection& selection, IniDocument& document,
                  bool isKept, WStringArray* leftOut = nullptr);
