// md5_name.h
//
// The name of an extra folder inside the set.
#pragma once
#include "foundation/wstring.h"

// The MD5 digest of the path's units with its terminator, as
// 32 capital hexadecimal digits. False if the system gives no digest; `name` is empty then.
bool Md5Name(const wchar_t* path, WString& name);
