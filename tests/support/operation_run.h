// operation_run.h
//
// A run of a worker in a test, on accounts of its own.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "core/app_object.h"
#include "operations/operation_context.h"
#include "support/account_place.h"

class OperationRun {
 public:
  AccountPlace machine;
  TestPlace& files;  // of the machine
  AppObject app;
  IniDocument document;
  std::unique_ptr<OperationContext> context;
  std::vector<std::string> told;  // targets of phases and lines of failures; "~" stands for the place
  size_t phases = 0;              // that have begun
  size_t stopAtPhase = 0;         // 0: never

  explicit OperationRun(OperationKind kind, TestSystem system = TestSystem::kNew);
  virtual ~OperationRun() = default;

  // The next run begins with a new record and nothing told.
  OperationContext& NewRecord();

  int32_t Run();

  bool IsTold(const std::string& part) const;  // whether a line holds it

 private:
  const OperationKind kind_;
  OperationObserver observer_;
};

// A restore of the set in the folder "set", or from the other installation in the folder "old".
class RestoreRun : public OperationRun {
 public:
  explicit RestoreRun(bool isSet = true, double version = 10.0, TestSystem system = TestSystem::kNew);

  void Select(uint32_t mask, std::initializer_list<std::pair<const char*, const char*>> targets);
  void SelectExtra(const std::string& key, const WString& target);
  void OnlyMissing() { document.SetValue(L"Settings", L"RTBackupOptions", L"2"); }
  WString Root() const { return files / (isSet_ ? "set" : "old"); }

 private:
  bool isSet_;
};

// A copy or a move from the folder "from" to the folder "to".
class CopyMoveRun : public OperationRun {
 public:
  explicit CopyMoveRun(uint32_t mask, bool isProfile = true, bool isMove = false);

  void OnlyMissing() { document.SetValue(L"Settings", L"CMBackupOptions", L"2"); }
};
