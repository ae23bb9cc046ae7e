// access_check.cc
#include "machine/access_check.h"

#include <cerrno>

#include "machine/call.h"
#include "machine/token.h"

namespace machine {
namespace {

constexpr uint32_t kBackupRights = FILE_GENERIC_READ | FILE_GENERIC_EXECUTE | ACCESS_SYSTEM_SECURITY;
constexpr uint32_t kRestoreRights =
    FILE_GENERIC_WRITE | DELETE | WRITE_DAC | WRITE_OWNER | ACCESS_SYSTEM_SECURITY;

uint32_t RightsOf(Location& location) {
  SecurityBytes security;
  // What can't be read lets nobody in.
  if (!ReadSecurity(location.parent, location.name.c_str(), security)) return 0;
  return GrantedRights(security);
}

}  // namespace

SecurityBytes ParentSecurity(Location& location) {
  if (location.pin) return location.pin->Security();
  SecurityBytes security;
  ReadSecurity(location.parent, ".", security);
  return security;
}

bool MayOpen(Location& location, uint32_t wanted, bool isBackup) {
  if (isBackup && HasPrivilege(kBackupPrivilege)) wanted &= ~kBackupRights;
  if (isBackup && HasPrivilege(kRestorePrivilege)) wanted &= ~kRestoreRights;
  if (wanted == 0) return true;
  wanted &= ~RightsOf(location);
  if (wanted == 0) return true;
  // Two rights come from the directory as well.
  SecurityBytes parent = ParentSecurity(location);
  uint32_t granted = GrantedRights(parent);
  if (granted & FILE_LIST_DIRECTORY) wanted &= ~FILE_READ_ATTRIBUTES;
  if (granted & FILE_DELETE_CHILD) wanted &= ~DELETE;
  return wanted == 0 || Fail(ERROR_ACCESS_DENIED);
}

bool MayReadAttributes(Location& location) {
  if (GrantedRights(ParentSecurity(location)) & FILE_LIST_DIRECTORY) return true;
  return (RightsOf(location) & FILE_READ_ATTRIBUTES) || Fail(ERROR_ACCESS_DENIED);
}

bool MayAdd(Location& location, uint32_t wanted) {
  SecurityBytes parent = ParentSecurity(location);
  return parent.empty() || (GrantedRights(parent) & wanted) == wanted || Fail(ERROR_ACCESS_DENIED);
}

bool MayDelete(Location& location) {
  SecurityBytes parent = ParentSecurity(location);
  if (parent.empty() || (GrantedRights(parent) & FILE_DELETE_CHILD)) return true;
  return (RightsOf(location) & DELETE) || Fail(ERROR_ACCESS_DENIED);
}

bool InheritSecurity(Location& location, bool isDirectory) {
  SecurityBytes security = InheritedSecurity(ParentSecurity(location), isDirectory);
  if (security.empty() || WriteSecurity(location.parent, location.name.c_str(), security)) return true;
  return Fail(ErrorFromErrno(errno));
}

}  // namespace machine
