// run_tree.h
//
// One folder tree of a run: what is copied where. Every operation makes a list of them, which the phase
// runner works through in its order and which the overlap check and a dry run look at beforehand.
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/wstring.h"

struct RunTree {
  WString source;
  WString target;
  // The folder above `source`, or above `target`, that a person or the system named. It is taken as it
  // is, and below it no link is followed: somebody else may have put one there. Empty: the root of the
  // tree itself is such a folder.
  WString sourceBase, targetBase;
  bool fast = false;          // application data
  bool otherFolders = false;  // not the source itself, but each of its other folders by its name
  bool inner = false;         // lies in the tree before it, whose walk tells of the links on the way
  uint32_t bit = 0;           // of the folder mask; 0 for an extra folder
};

enum class ApplicationData { kRoaming, kLocal };

// Adds a tree of application data, and behind it the folders of it that the fast copy leaves out with
// everything called "Windows" at its second level. `whole` has source, target and bases.
void AddApplicationData(std::vector<RunTree>& trees, RunTree whole, ApplicationData part);
