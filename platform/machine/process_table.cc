#include "machine/process_table.h"

#include <mutex>

#include "machine/call.h"
#include "machine/accounts_file.h"
#include "machine/machine.h"
#include "machine/sessions.h"

namespace machine {
namespace {

constexpr DWORD kSystemProcess = 4;   // the kernel's own
constexpr DWORD kFirstProcess = 400;  // of the others; this one's is above all of them

struct Table {
  std::mutex lock;
  std::vector<std::shared_ptr<MachineProcess>> processes;
};
Table& TheTable() {
  static auto* table = new Table;
  return *table;
}

void DropProcesses() {
  const std::lock_guard hold(TheTable().lock);
  TheTable().processes.clear();
}

std::shared_ptr<MachineProcess> Make(DWORD id, DWORD session, const std::string& image,
                                     const std::string& account) {
  auto process = std::make_shared<MachineProcess>();
  process->id = id;
  process->session = session;
  process->image = image;
  process->account = account;
  process->parent = id == kSystemProcess ? 0 : kSystemProcess;
  return process;
}

void Fill(std::vector<std::shared_ptr<MachineProcess>>& processes) {
  static const bool asked = (OnLeaveMachine(DropProcesses), true);
  static_cast<void>(asked);
  const Machine& here = ThisMachine();
  processes.push_back(Make(kSystemProcess, 0, "System", "SYSTEM"));
  processes.back()->isProtected = true;
  DWORD id = kFirstProcess;
  for (const ProcessSettings& settings : here.settings.processes) {
    processes.push_back(Make(id, settings.session, settings.image, settings.account));
    id += 4;
  }
  const AccountsHold hold;
  const Account* account = here.RunningAccount();
  processes.push_back(Make(GetCurrentProcessId(), OwnSession(), here.settings.programPath,
                           account ? account->name : "SYSTEM"));
  processes.back()->token = ProcessToken();
}

}  // namespace

std::vector<std::shared_ptr<MachineProcess>> Processes() {
  ProcessToken();  // made before the lock is taken, since it asks to be told of leaving, too
  const std::lock_guard hold(TheTable().lock);
  if (TheTable().processes.empty()) Fill(TheTable().processes);
  return TheTable().processes;
}

std::shared_ptr<MachineProcess> FindProcess(DWORD id) {
  for (const auto& process : Processes()) {
    if (process->id == id) return process;
  }
  return nullptr;
}

std::shared_ptr<MachineProcess> OwnProcess() { return FindProcess(GetCurrentProcessId()); }

std::shared_ptr<MachineProcess> ProcessOf(HANDLE handle) {
  return handle == GetCurrentProcess() ? OwnProcess() : HandleTo<MachineProcess>(handle);
}

std::shared_ptr<Token> TokenOfProcess(const std::shared_ptr<MachineProcess>& process) {
  if (process->isProtected) {
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
  }
  const std::lock_guard hold(TheTable().lock);
  if (!process->token) process->token = MakeToken(process->account, process->session);
  return process->token;
}

void EndProcess(MachineProcess& process, DWORD exitCode) {
  process.exitCode = exitCode;
  process.Signal();
  const std::lock_guard hold(TheTable().lock);
  std::erase_if(TheTable().processes, [&](const auto& row) { return row.get() == &process; });
}

}  // namespace machine
