// set_reader.h
//
// A reader of backup sets that was written from docs/backup-set.md alone and uses nothing of the
// program. What it doesn't find, another reader wouldn't find either.
#pragma once
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace set_reader {

struct ReadAccount {
  std::string name, displayName;
  int level = -1;
  bool isOfLastBackup = false;
  std::map<std::string, std::string> files;  // "Desktop/a.txt" -> bytes
};

struct ReadExtraFolder {
  std::string sourcePath;
  std::string nameInSet;
  bool isOfLastBackup = false;
  std::map<std::string, std::string> files;
};

struct ReadSet {
  std::string problem;  // empty if the set could be read
  int folderMask = 0, options = 0, skippedAttributes = 0;
  std::vector<ReadAccount> accounts;          // those with data
  std::vector<ReadExtraFolder> extraFolders;  // those with data
};

ReadSet Read(const std::string& folder);

std::string Md5(const std::string& bytes);  // 32 capital hexadecimal digits

}  // namespace set_reader
