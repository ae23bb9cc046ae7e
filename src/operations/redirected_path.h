// redirected_path.h
//
// The one folder that a 32-bit program on a 64-bit system can't see under its own name: for System32 it
// gets SysWOW64, without a word.
#pragma once
#include "foundation/wstring.h"

// Why a folder that is, lies in or holds System32 can't be taken under this name, as a sentence for a person.
// Empty for all others, and for roots of drives. `path` is absolute.
WString RedirectionSentence(const wchar_t* path);
