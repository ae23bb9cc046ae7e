#include "machine/show_machine.h"

#include <windows.h>

#include <sys/statvfs.h>

#include <algorithm>

#include "machine/machine.h"
#include "machine/names.h"
#include "machine/process_table.h"
#include "machine/profile_list.h"
#include "machine/text_output.h"

namespace machine {
namespace {

void ShowDrives(FILE* output) {
  const Machine& here = ThisMachine();
  fprintf(output, "\nDrives\n");
  for (const char letter : here.Drives()) {
    const std::string folder = here.DriveFolder(letter);
    struct statvfs status;
    const bool isKnown = statvfs(folder.c_str(), &status) == 0;
    fprintf(output, "  %c:  %s%s%s", letter, Escaped(folder).c_str(),
            here.IsAttachedDrive(letter) ? ", attached" : "",
            here.IsReadOnlyDrive(letter) ? ", read only" : "");
    if (isKnown) {
      fprintf(output, " (%s free of %s)", Amount(uint64_t{status.f_bavail} * status.f_frsize).c_str(),
              Amount(uint64_t{status.f_blocks} * status.f_frsize).c_str());
    }
    fprintf(output, "\n");
  }
}

void ShowAccounts(FILE* output) {
  fprintf(output, "\nAccounts\n");
  for (const Account& account : ThisMachine().accounts) {
    std::string profile = !account.home.empty() ? account.home : ProfileOf(account.sid);
    if (profile.empty()) profile = "no profile";
    const bool isMissing = GetFileAttributesW(AsWide(ToUtf16(profile))) == INVALID_FILE_ATTRIBUTES &&
                           (GetLastError() == ERROR_FILE_NOT_FOUND || GetLastError() == ERROR_PATH_NOT_FOUND);
    fprintf(output, "  %s  %s%s  %s\n", Escaped(account.name).c_str(), AccountTypeName(account.type).c_str(),
            (account.flags & kAccountDisabled) ? ", disabled" : "", account.sid.c_str());
    if (!account.fullName.empty()) fprintf(output, "      %s\n", Escaped(account.fullName).c_str());
    fprintf(output, "      %s%s\n", Escaped(profile).c_str(),
            isMissing && profile != "no profile" ? " (missing)" : "");
  }
}

}  // namespace

void ShowMachine(FILE* output) {
  const Machine& here = ThisMachine();
  const MachineSettings& settings = here.settings;
  const Account* console = here.FindAccount(settings.consoleAccount);
  const Account* running = here.RunningAccount();
  fprintf(output, "%s, Windows %u.%u.%u, in %s\n", Escaped(settings.computerName).c_str(), settings.major,
          settings.minor, settings.build, Escaped(here.folder).c_str());
  fprintf(output, "  at the console:  %s\n", console ? Escaped(console->name).c_str() : "nobody");
  fprintf(output, "  program runs as: %s\n", running ? Escaped(running->name).c_str() : "the system");
  fprintf(output, "  program:         %s\n", Escaped(settings.programPath).c_str());
  fprintf(output, "  time zone:       %s\n", settings.timeZone.empty() ? "UTC" : settings.timeZone.c_str());
  ShowDrives(output);
  ShowAccounts(output);
  fprintf(output, "\nProcesses\n");
  for (const auto& process : Processes()) {
    if (process == OwnProcess()) continue;  // that is norvane-machine, and no process of the machine
    fprintf(output, "  %5u  session %u  %s  %s\n", static_cast<unsigned>(process->id),
            static_cast<unsigned>(process->session), Escaped(process->image).c_str(),
            Escaped(process->account).c_str());
  }
}

std::string ErrorReason(unsigned error) {
  wchar_t* text = nullptr;
  FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                 nullptr, error, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  std::string reason = text ? ToUtf8(text) : std::string();
  LocalFree(text);
  while (!reason.empty() &&
         (reason.back() == '\n' || reason.back() == '\r' || reason.back() == '.' || reason.back() == ' ')) {
    reason.pop_back();
  }
  return (reason.empty() ? std::string("the call failed") : reason) + " (error " + std::to_string(error) +
         ")";
}

}  // namespace machine
