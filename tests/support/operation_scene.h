// operation_scene.h
//
// One small run of each operation, with everything in it that has a road of its own, for the campaigns that
// let something go wrong at every place. It can be set up again and again on one machine.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "support/operation_run.h"

enum class Operation { kBackup, kRestore, kRestoreFrom, kCopy, kMove };
std::string OperationName(Operation operation);

struct SceneFile {
  std::string source, target;  // below the place
  std::string bytes;           // of the source
  std::string old;             // what is at the target before; empty: nothing
  std::string logicalName;     // of the target account's folder; empty: of none
};

class OperationScene {
 public:
  std::unique_ptr<OperationRun> run;
  std::vector<SceneFile> files;

  explicit OperationScene(Operation operation);

  // Source and target as at first, and nothing told. `onlyMissing` as the default is; a backup takes what
  // is new and outdated, too.
  void Reset(bool onlyMissing);
  // The next run, on what the last one left.
  void Again(bool onlyMissing);

  std::string Place() const { return Utf8(run->files.Path()); }
  std::string Read(const std::string& file) const;  // "(none)" if there is no such file
  bool IsNewAtTarget(const SceneFile& file) const { return Read(file.target) == file.bytes; }
  // Whether a failure was told of the file, of a folder on its way, or of what it depends on.
  bool IsTold(const SceneFile& file) const;

  // No file is torn, lost or left half made. `mayLeaveTemporary` is for a program that was killed.
  void ExpectWhole(const std::string& when, bool mayLeaveTemporary = false) const;

 private:
  // A file of a folder that lies at one place in a set and at another in a profile.
  void Add(const std::string& inSet, const std::string& inProfile, const std::string& name,
           const std::string& old, const std::string& logicalName);

  void AddExtra();

  Operation operation_;
};
