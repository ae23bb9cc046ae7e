#include "machine/sessions.h"

#include "machine/machine.h"

namespace machine {

uint32_t ConsoleSession() { return ThisMachine().settings.HasOldLayout() ? 0 : 1; }

uint32_t OwnSession() { return ThisMachine().settings.consoleAccount.empty() ? 0 : ConsoleSession(); }

}  // namespace machine
