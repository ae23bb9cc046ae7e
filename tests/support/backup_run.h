// backup_run.h
//
// A run of the backup worker in a test, into the folder "set" of its place.
#pragma once
#include "support/operation_run.h"

class BackupRun : public OperationRun {
 public:
  BackupRun();

  void Select(const wchar_t* mask, std::initializer_list<const wchar_t*> names);
};
