#include "support/random_copy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

#include "support/copy_run.h"
#include "support/random_people.h"

namespace {

using random_people::File;
using random_people::Files;

// Without the times of making, which the engine leaves to the system.
Files ReadTree(const WString& folder) {
  Files tree =
      random_people::ReadTree(folder, ~static_cast<uint32_t>(FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NORMAL));
  for (auto& [path, file] : tree) file.created = 0;
  return tree;
}

class RandomCopy {
 public:
  explicit RandomCopy(uint32_t seed) : random_(seed) {
    OperationContext& context = *run_.context;
    context.copyOptions = Pick(4);
    context.attributeMask = Pick(4) * FILE_ATTRIBUTE_HIDDEN;
    context.moveFiles = Pick(4) == 0;
    if (Pick(2)) context.copyBufferSize = 16;
    fast_ = Pick(3) == 0;
    run_.place.Folder("source");
    run_.place.Folder("target");
    Grow("", 0);
  }

  void Check() {
    const Files source = ReadTree(run_.place / "source");
    Files target = ReadTree(run_.place / "target"), left = source;
    Expect(source, target, left);
    EXPECT_EQ(run_.Run(fast_), errors_ == 0);
    EXPECT_EQ(ReadTree(run_.place / "target"), target);
    EXPECT_EQ(ReadTree(run_.place / "source"), left);
    EXPECT_EQ(run_.context->failures, failures_) << testing::PrintToString(run_.told);
    EXPECT_EQ(run_.context->errors, errors_);
    EXPECT_EQ(run_.Log().size(), static_cast<size_t>(failures_));
    EXPECT_GE(run_.context->progress, 0);
    EXPECT_LE(run_.context->progress, 1000);
  }

 private:
  uint32_t Pick(uint32_t choices) { return static_cast<uint32_t>(random_() % choices); }

  std::string Name() {
    const char* names[] = {"a",
                           "B.txt",
                           "Größe",
                           "日本",
                           "x y",
                           ".z",
                           "Packages",
                           "Windows",
                           "a=b",
                           "[c]",
                           "\xF0\x9F\x98\x80",
                           "very long name that goes on and on and on"};
    return std::string(names[Pick(12)]) + (Pick(2) ? std::to_string(Pick(4)) : "");
  }

  std::string Bytes() {
    const uint32_t sizes[] = {0, 1, 15, 16, 17, 32, 500};
    std::string bytes(sizes[Pick(7)], ' ');
    for (char& byte : bytes) byte = static_cast<char>('a' + Pick(26));
    return bytes;
  }

  void MakeFile(const std::string& path, bool mayBeReadOnly) {
    WString file = run_.place.File(path, Bytes());
    SetWriteTime(file.CStr(), kSomeTime + static_cast<int64_t>(Pick(3)) * kDay);
    uint32_t attributes = 0;
    if (Pick(4) == 0) attributes |= FILE_ATTRIBUTE_HIDDEN;
    if (Pick(4) == 0) attributes |= FILE_ATTRIBUTE_SYSTEM;
    if (mayBeReadOnly && Pick(4) == 0) attributes |= FILE_ATTRIBUTE_READONLY;
    SetAttributes(file.CStr(), attributes ? attributes : FILE_ATTRIBUTE_NORMAL);
  }

  // Entries of a folder of the source, each with or without something at the target.
  void Grow(const std::string& folder, int depth) {
    for (uint32_t i = Pick(6); i > 0; i--) {
      std::string path = folder + "/" + Name();
      if (run_.place.Exists("source" + path)) continue;
      bool isFolder = depth < 4 && Pick(3) == 0;
      uint32_t there = Pick(10);
      bool hasTargetFolder =
          folder.empty() || (Attributes((run_.place / ("target" + folder)).CStr()) &
                             (FILE_ATTRIBUTE_DIRECTORY | 0x80000000)) == FILE_ATTRIBUTE_DIRECTORY;
      if (hasTargetFolder && there < 5) {
        bool isOtherKind = there == 0;
        if (isFolder != isOtherKind) {
          run_.place.Folder("target" + path);
        } else {
          // A move doesn't go over a read-only file; how that is told isn't the same everywhere.
          MakeFile("target" + path, !run_.context->moveFiles);
        }
      }
      if (isFolder) {
        run_.place.Folder("source" + path);
        Grow(path, depth + 1);
      } else {
        MakeFile("source" + path, true);
      }
    }
  }

  bool IsLeftOut(const std::string& path) const {
    if (!fast_) return false;
    std::string name = path.substr(path.rfind('/') + 1);
    size_t depth = static_cast<size_t>(std::count(path.begin(), path.end(), '/'));
    return (depth == 0 && name == "Packages") || (depth == 1 && name == "Windows");
  }

  // What is at the target, at the source, and in the counts when the engine keeps to its rules.
  void Expect(const Files& source, Files& target, Files& left) {
    std::vector<std::string> closed;  // folders that aren't gone into
    for (const auto& [path, entry] : source) {
      bool isInside = std::any_of(closed.begin(), closed.end(), [&path = path](const std::string& folder) {
        return path.starts_with(folder);
      });
      if (isInside) continue;
      auto there = target.find(path);
      if (entry.isFolder) {
        bool isFile = there != target.end() && !there->second.isFolder;
        if (IsLeftOut(path) || (isFile && !fast_)) {
          closed.push_back(path + "/");
          if (!IsLeftOut(path)) failures_++, errors_++;
        } else {
          target[path] = entry;
        }
        continue;
      }
      if (!fast_ && !IsWanted(entry, there == target.end() ? nullptr : &there->second)) continue;
      if (there != target.end() && there->second.isFolder) {
        failures_++;
        continue;
      }
      target[path] = entry;
      if (run_.context->moveFiles) left.erase(path);
    }
  }

  bool IsWanted(const File& entry, const File* there) const {
    const OperationContext& context = *run_.context;
    if (entry.attributes & context.attributeMask) return false;
    if (!there) return true;
    if (context.copyOptions & kCopyOnlyMissing) return false;
    bool isCurrent =
        !there->isFolder && there->written >= entry.written && there->bytes.size() == entry.bytes.size();
    return !(context.copyOptions & kCopyOnlyNewer) || !isCurrent;
  }

  std::mt19937 random_;
  CopyRun run_;
  bool fast_ = false;
  int64_t failures_ = 0;
  int64_t errors_ = 0;
};

}  // namespace

void CheckRandomCopy(uint32_t seed) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  RandomCopy(seed).Check();
}

uint32_t SeedCount(uint32_t usual) {
  const char* text = std::getenv("NORVANE_SEEDS");
  return text ? static_cast<uint32_t>(std::strtoul(text, nullptr, 10)) : usual;
}
