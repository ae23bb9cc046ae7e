// test_machine.h
//
// A machine of a test's own, in use while this lives. What was in use before comes back.
#pragma once
#include <gtest/gtest.h>
#include <stdlib.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "machine/create_machine.h"
#include "machine/machine.h"
#include "machine/names.h"

// Administrator Anna at the console, and standard user Bob.
inline machine::MachinePlan TwoAccounts() {
  machine::MachinePlan plan;
  machine::AccountPlan anna, bob;
  anna.name = "Anna";
  anna.type = machine::AccountType::kAdministrator;
  anna.fullName = "Anna Berg";
  bob.name = "Bob";
  plan.accounts = {anna, bob};
  plan.consoleAccount = "Anna";
  plan.moreDrives = "D";
  return plan;
}

// An empty folder of Linux, deleted at the end.
class DiskFolder {
 public:
  DiskFolder() : path((std::filesystem::temp_directory_path() / "norvane-platform.XXXXXX").string()) {
    if (!mkdtemp(path.data())) ADD_FAILURE() << "no folder " << path;
  }
  ~DiskFolder() {
    std::error_code error;
    std::filesystem::remove_all(path, error);
  }
  DiskFolder(const DiskFolder&) = delete;
  DiskFolder& operator=(const DiskFolder&) = delete;
  std::string path;
};

class TestMachine {
 public:
  explicit TestMachine(const machine::MachinePlan& plan = TwoAccounts()) {
    std::string error;
    if (!machine::CreateMachine(place_.path, plan, &error)) ADD_FAILURE() << error;
    Reopen();
  }
  ~TestMachine() { machine::UseMachine(before_); }

  // As a later start of the program finds it.
  void Reopen() {
    std::string error;
    machine::Machine opened;
    machine::LeaveMachine();
    if (!machine::Machine::Open(place_.path, opened, &error)) ADD_FAILURE() << error;
    machine::UseMachine(opened);
  }
  // The program's account from now on.
  void RunAs(const std::string& account) {
    machine::Machine changed = machine::ThisMachine();
    changed.settings.runAs = account;
    machine::UseMachine(changed);
  }
  const std::string& Folder() const { return place_.path; }
  std::string Disk(const std::string& path) const {
    std::string disk = place_.path + "/" + path.substr(0, 1) + path.substr(2);
    std::replace(disk.begin(), disk.end(), '\\', '/');
    return disk;
  }
  std::string Sid(const std::string& account) const {
    return machine::ThisMachine().FindAccount(account)->sid;
  }

 private:
  machine::Machine before_ = machine::ThisMachine();
  DiskFolder place_;
};

inline std::u16string Wide16(const std::string& text) { return machine::ToUtf16(text); }

inline std::string BytesOf(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}
inline void PutBytes(const std::string& file, const std::string& bytes) {
  std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

// What another program prints, and how it ended.
struct ProgramRun {
  int code = -1;
  std::string output;  // standard output and error
};
inline ProgramRun RunProgramOf(const std::string& command) {
  ProgramRun run;
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (!pipe) return run;
  char block[4096];
  while (const size_t count = fread(block, 1, sizeof block, pipe)) run.output.append(block, count);
  const int status = pclose(pipe);
  run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}
