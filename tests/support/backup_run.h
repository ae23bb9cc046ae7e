// backup_run.h
//
// A run of the backup worker in a test, on accounts of its own and into the folder "set" of its place.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "core/app_object.h"
#include "operations/operation_context.h"
#include "support/account_place.h"

class BackupRun {
 public:
  AccountPlace machine;
  AppObject app;
  IniDocument document;
  std::unique_ptr<OperationContext> context;
  std::vector<std::string> told;  // targets of phases, below the set, and lines of failures
  size_t stopAtPhase = 0;         // 0: never

  BackupRun();

  // The next run begins with a new record and nothing told.
  OperationContext& NewRecord();

  void Select(const wchar_t* mask, std::initializer_list<const wchar_t*> names);
  int32_t Run() { return app.RunBackupWorker(*context); }

 private:
  OperationObserver observer_;
};
