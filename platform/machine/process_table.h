// process_table.h
//
// The processes of the machine: this one, those that machine.ini names, and those that run wherever
// somebody has logged on. None but this one runs anything; a process that was terminated is gone until
// another machine is set.
#pragma once
#include <windows.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "machine/token.h"
#include "machine/waitable.h"

namespace machine {

struct MachineProcess : Waitable {
  DWORD id = 0;
  DWORD parent = 0;
  DWORD session = 0;
  std::string image;             // Windows path; the bare name for what the kernel runs
  std::string account;           // name, or SYSTEM
  std::shared_ptr<Token> token;  // made when it is first asked for
  std::atomic<DWORD> exitCode{STILL_ACTIVE};
  bool isProtected = false;  // nobody opens its token or ends it

  std::string ImageName() const { return image.substr(image.rfind('\\') + 1); }
};

std::vector<std::shared_ptr<MachineProcess>> Processes();
std::shared_ptr<MachineProcess> FindProcess(DWORD id);
std::shared_ptr<MachineProcess> OwnProcess();

// The process of a handle, also of the pseudo handle of this one. Null with ERROR_INVALID_HANDLE.
std::shared_ptr<MachineProcess> ProcessOf(HANDLE handle);

// Null with ERROR_ACCESS_DENIED for a protected one.
std::shared_ptr<Token> TokenOfProcess(const std::shared_ptr<MachineProcess>& process);

// Ends it and takes it from the table.
void EndProcess(MachineProcess& process, DWORD exitCode);

}  // namespace machine
