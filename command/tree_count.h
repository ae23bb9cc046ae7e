// tree_count.h
//
// How much a folder tree holds.
#pragma once
#include <cstdint>

struct TreeCount {
  int64_t entries = 0;  // files and folders, without links
  int64_t bytes = 0;    // of the files
};

// Adds what `folder` holds, by the counting pass of the copy itself. False if Ctrl+C came meanwhile.
bool CountTree(const wchar_t* folder, TreeCount& count);
