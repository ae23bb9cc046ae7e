// account_lookup.cc
//
// From an account's name to its SID and back.
#include <cstring>

#include "machine/account_names.h"
#include "machine/call.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/sid_text.h"

using namespace machine;

namespace {

// `size` counts units: with the terminator where it tells what is needed, without where it fitted.
bool FitsText(const std::u16string& text, const wchar_t* buffer, const DWORD* size) {
  return buffer && *size > text.size();
}
void PutText(const std::u16string& text, wchar_t* buffer, DWORD* size, bool fits) {
  if (fits) memcpy(buffer, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
  *size = static_cast<DWORD>(text.size() + (fits ? 0 : 1));
}

}  // namespace

BOOL WINAPI LookupAccountNameW(const wchar_t* system, const wchar_t* name, PSID sid, DWORD* sidSize,
                               wchar_t* domain, DWORD* domainSize, SID_NAME_USE* use) {
  EnterCall();
  if (!sidSize || !domainSize || !use) return Fail(ERROR_INVALID_PARAMETER);
  if (!IsThisComputer(system)) return Fail(RPC_S_SERVER_UNAVAILABLE);
  NamedSid found;
  if (!FindAccountName(ToUtf8(name), found)) return Fail(ERROR_NONE_MAPPED);
  const std::string bytes = SidBytes(found.sid);
  if (bytes.empty()) return Fail(ERROR_NONE_MAPPED);
  const std::u16string domainText = ToUtf16(found.domain);
  const bool fits = sid && *sidSize >= bytes.size() && FitsText(domainText, domain, domainSize);
  *sidSize = static_cast<DWORD>(bytes.size());
  PutText(domainText, domain, domainSize, fits);
  if (!fits) return Fail(ERROR_INSUFFICIENT_BUFFER);
  memcpy(sid, bytes.data(), bytes.size());
  *use = found.use;
  return TRUE;
}

BOOL WINAPI LookupAccountSidW(const wchar_t* system, PSID sid, wchar_t* name, DWORD* nameSize,
                              wchar_t* domain, DWORD* domainSize, SID_NAME_USE* use) {
  EnterCall();
  if (!nameSize || !domainSize || !use) return Fail(ERROR_INVALID_PARAMETER);
  if (!IsThisComputer(system)) return Fail(RPC_S_SERVER_UNAVAILABLE);
  if (!IsValidSid(sid)) return Fail(ERROR_INVALID_SID);
  NamedSid found;
  if (!FindAccountSid(SidText(sid), found)) return Fail(ERROR_NONE_MAPPED);
  const std::u16string nameText = ToUtf16(found.name), domainText = ToUtf16(found.domain);
  const bool fits = FitsText(nameText, name, nameSize) && FitsText(domainText, domain, domainSize);
  PutText(nameText, name, nameSize, fits);
  PutText(domainText, domain, domainSize, fits);
  if (!fits) return Fail(ERROR_INSUFFICIENT_BUFFER);
  *use = found.use;
  return TRUE;
}
