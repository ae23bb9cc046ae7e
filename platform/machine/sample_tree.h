// sample_tree.h
//
// Writes files, folders and links of a sample machine: the same bytes, sizes and times at each run.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace machine {

class SampleTree {
 public:
  explicit SampleTree(std::string machineFolder) : folder_(std::move(machineFolder)) {}

  // All paths are Windows paths on the machine, such as "D:\\Projects\\a.txt". Folders are made with
  // their parents. After a failure nothing more is made.
  void Folder(std::string_view path, uint32_t attributes = 0);
  void File(std::string_view path, uint64_t size, uint32_t attributes = 0);
  void Text(std::string_view path, std::string_view text, uint32_t attributes = 0);
  void Junction(std::string_view path, std::string_view target);

  // Sets the times of the folders, deepest first. False with a sentence in `error` if anything failed.
  bool Finish(std::string* error);

  uint64_t Files() const { return files_; }
  uint64_t Bytes() const { return bytes_; }

 private:
  std::string Disk(std::string_view path) const;
  bool MakeParent(const std::string& disk);
  void Write(std::string_view path, std::string_view bytes, uint32_t attributes);
  void SetAttributes(const std::string& disk, uint32_t attributes);
  void Fail(const std::string& disk, const char* what);

  std::string folder_, failure_;
  std::string lastParent_;
  std::vector<std::string> folders_;  // on the disk, in the order in which they were made
  uint64_t files_ = 0, bytes_ = 0;
};

// A number that depends on the text alone, for sizes, times and bytes.
uint64_t SampleNumber(std::string_view text);

}  // namespace machine
