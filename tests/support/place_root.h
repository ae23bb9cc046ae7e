// place_root.h
//
// What differs between the systems in making and removing a test's folder.
#pragma once
#include "foundation/wstring.h"

// The folder that the folders of all tests of this program lie in. It exists.
WString PlaceRoot();

// Removes a test's folder with all it holds, whatever the test did to it; fails the test if something
// stays. Doesn't follow a link.
void RemovePlace(const WString& path);

// A directory symbolic link at `path`; fails the test where that can't be had.
void MakeDirectoryLink(const WString& path, const WString& target);
