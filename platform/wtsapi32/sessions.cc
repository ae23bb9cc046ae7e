// sessions.cc
//
// Who sits at the console.
#include <windows.h>

#include <wtsapi32.h>

#include <cstdlib>
#include <cstring>

#include "machine/call.h"
#include "machine/accounts_file.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/sessions.h"

using namespace machine;

DWORD WINAPI WTSGetActiveConsoleSessionId() {
  EnterCall();
  return ConsoleSession();
}

BOOL WINAPI WTSQuerySessionInformationW(HANDLE server, DWORD session, WTS_INFO_CLASS kind, wchar_t** result,
                                        DWORD* size) {
  EnterCall();
  if (server != WTS_CURRENT_SERVER_HANDLE) Unsupported("WTSQuerySessionInformationW", "another server");
  if (kind != WTSUserName) Unsupported("WTSQuerySessionInformationW", "anything but the user's name");
  if (!result || !size) return Fail(ERROR_INVALID_PARAMETER);
  if (session == WTS_CURRENT_SESSION) session = OwnSession();
  if (session != 0 && session != ConsoleSession()) return Fail(ERROR_FILE_NOT_FOUND);
  // At the logon screen the name is there and empty.
  const AccountsHold hold;
  const Account* account = ThisMachine().FindAccount(ThisMachine().settings.consoleAccount);
  const bool isConsole = session == ConsoleSession() && account;
  const std::u16string name = isConsole ? ToUtf16(account->name) : std::u16string();
  *size = static_cast<DWORD>((name.size() + 1) * sizeof(wchar_t));
  *result = static_cast<wchar_t*>(malloc(*size));
  if (!*result) return Fail(ERROR_NOT_ENOUGH_MEMORY);
  memcpy(*result, name.c_str(), *size);
  return TRUE;
}

void WINAPI WTSFreeMemory(void* memory) {
  EnterCall();
  free(memory);
}
