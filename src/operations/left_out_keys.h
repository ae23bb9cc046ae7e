// left_out_keys.h
//
// What a reader of rows passed over, so that a person can be told: the info file may be a stranger's.
#pragma once
#include "foundation/wstring_array.h"

struct LeftOutKeys {
  WStringArray notPlain;  // would lead elsewhere, or can't name a folder
  WStringArray repeated;  // have a row already
};
