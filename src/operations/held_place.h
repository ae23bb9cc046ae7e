// held_place.h
//
// Where a folder really lies at the moment of asking. Whatever leads to it may belong to somebody who could
// turn it into a link under way; so the links of this moment are resolved, and none is followed later.
#pragma once
#include "foundation/wstring.h"

struct HeldPlace {
  WString folder;
  WString base;  // see RunTree::targetBase; empty on a share, whose server resolves its links itself
};

// `folder` needn't exist.
HeldPlace FindHeldPlace(const WString& folder);
