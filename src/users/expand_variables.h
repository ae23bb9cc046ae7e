// expand_variables.h
//
// Paths with variables, as registry, account database and people write them.
#pragma once
#include "foundation/wstring.h"

// Expands the variables of this process, such as %SystemDrive%. The text stays as it was, and the result
// is false, if the expanded text needs more than 4096 units with its terminator.
bool ExpandVariables(WString& text);
