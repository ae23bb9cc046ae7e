// copy_run.h
//
// A run of the copy engine in a test: a source and a target in a place of its own, and what was told.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "core/app_object.h"
#include "operations/operation_context.h"
#include "support/test_place.h"

struct FileFacts {
  std::string bytes;
  uint32_t attributes;
  int64_t created, written;  // FILETIMEs
};

// A record for one run, with a buffer of its own.
std::unique_ptr<OperationContext> NewContext(AppObject& app, const OperationObserver* observer = nullptr);

class CopyRun {
 public:
  TestPlace place;
  AppObject app;
  std::unique_ptr<OperationContext> context;
  std::vector<std::string> told;  // what the observer heard
  std::vector<uint32_t> reasons;  // the system's code of each failure

  CopyRun();

  // The next run begins with a new record.
  OperationContext& NewRecord();

  // Copies <place>\source to <place>\target.
  bool Run(bool fast = false);

  // The messages in the log so far, without their time stamps; the place is written as "~".
  std::vector<std::string> Log() const;

 private:
  OperationObserver observer_;
};

// A run of blocks of four bytes, so that small files have many.
void UseSmallBlocks(OperationContext& context);

FileFacts Facts(const WString& path);
void SetTimes(const wchar_t* path, int64_t created, int64_t written);  // FILETIMEs; 0: it stays
inline void SetWriteTime(const wchar_t* path, int64_t time) { SetTimes(path, 0, time); }
inline constexpr int64_t kDay = 864000000000;             // of FILETIMEs
inline constexpr int64_t kSomeTime = 132000000000000000;  // in 2019
