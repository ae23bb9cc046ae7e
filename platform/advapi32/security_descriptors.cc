// security_descriptors.cc
//
// Security descriptors in memory, in both forms: absolute, with pointers, and self-relative, with offsets.
#include <cstring>

#include "machine/call.h"

using namespace machine;

namespace {

// The parts of a descriptor of either form; null where it has none.
struct Parts {
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  PSID owner = nullptr, group = nullptr;
  ACL* audit = nullptr;
  ACL* access = nullptr;
};

bool ReadParts(PSECURITY_DESCRIPTOR descriptor, Parts& parts) {
  if (!descriptor) return false;
  const auto* absolute = static_cast<const SECURITY_DESCRIPTOR*>(descriptor);
  if (absolute->Revision != SECURITY_DESCRIPTOR_REVISION) return false;
  parts.control = absolute->Control;
  if (!(parts.control & SE_SELF_RELATIVE)) {
    parts.owner = absolute->Owner;
    parts.group = absolute->Group;
    parts.audit = (parts.control & SE_SACL_PRESENT) ? absolute->Sacl : nullptr;
    parts.access = (parts.control & SE_DACL_PRESENT) ? absolute->Dacl : nullptr;
    return true;
  }
  const auto* relative = static_cast<const SECURITY_DESCRIPTOR_RELATIVE*>(descriptor);
  const auto at = [&](DWORD offset) -> void* {
    return offset ? static_cast<BYTE*>(descriptor) + offset : nullptr;
  };
  parts.owner = at(relative->Owner);
  parts.group = at(relative->Group);
  parts.audit = (parts.control & SE_SACL_PRESENT) ? static_cast<ACL*>(at(relative->Sacl)) : nullptr;
  parts.access = (parts.control & SE_DACL_PRESENT) ? static_cast<ACL*>(at(relative->Dacl)) : nullptr;
  return true;
}

// For the calls that change a descriptor, which must be absolute.
SECURITY_DESCRIPTOR* Absolute(PSECURITY_DESCRIPTOR descriptor) {
  auto* absolute = static_cast<SECURITY_DESCRIPTOR*>(descriptor);
  if (absolute && absolute->Revision == SECURITY_DESCRIPTOR_REVISION &&
      !(absolute->Control & SE_SELF_RELATIVE)) {
    return absolute;
  }
  SetLastError(ERROR_INVALID_SECURITY_DESCR);
  return nullptr;
}

void SetControl(SECURITY_DESCRIPTOR& descriptor, int flag, bool isSet) {
  const int control = isSet ? descriptor.Control | flag : descriptor.Control & ~flag;
  descriptor.Control = static_cast<SECURITY_DESCRIPTOR_CONTROL>(control);
}

DWORD SidRoom(PSID sid) { return sid ? GetLengthSid(sid) : 0; }
DWORD ListRoom(const ACL* list) { return list ? list->AclSize : 0; }

}  // namespace

BOOL WINAPI InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision) {
  if (revision != SECURITY_DESCRIPTOR_REVISION) return Fail(ERROR_UNKNOWN_REVISION);
  memset(descriptor, 0, sizeof(SECURITY_DESCRIPTOR));
  static_cast<SECURITY_DESCRIPTOR*>(descriptor)->Revision = SECURITY_DESCRIPTOR_REVISION;
  return TRUE;
}

BOOL WINAPI IsValidSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor) {
  Parts parts;
  if (!ReadParts(descriptor, parts)) return FALSE;
  return (!parts.owner || IsValidSid(parts.owner)) && (!parts.group || IsValidSid(parts.group)) &&
         (!parts.access || IsValidAcl(parts.access)) && (!parts.audit || IsValidAcl(parts.audit));
}

BOOL WINAPI SetSecurityDescriptorOwner(PSECURITY_DESCRIPTOR descriptor, PSID owner, BOOL isDefault) {
  SECURITY_DESCRIPTOR* const absolute = Absolute(descriptor);
  if (!absolute) return FALSE;
  absolute->Owner = owner;
  SetControl(*absolute, SE_OWNER_DEFAULTED, isDefault);
  return TRUE;
}

BOOL WINAPI SetSecurityDescriptorGroup(PSECURITY_DESCRIPTOR descriptor, PSID group, BOOL isDefault) {
  SECURITY_DESCRIPTOR* const absolute = Absolute(descriptor);
  if (!absolute) return FALSE;
  absolute->Group = group;
  SetControl(*absolute, SE_GROUP_DEFAULTED, isDefault);
  return TRUE;
}

BOOL WINAPI SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL isPresent, ACL* list,
                                      BOOL isDefault) {
  SECURITY_DESCRIPTOR* const absolute = Absolute(descriptor);
  if (!absolute) return FALSE;
  absolute->Dacl = isPresent ? list : nullptr;
  SetControl(*absolute, SE_DACL_PRESENT, isPresent);
  SetControl(*absolute, SE_DACL_DEFAULTED, isDefault);
  return TRUE;
}

BOOL WINAPI SetSecurityDescriptorControl(PSECURITY_DESCRIPTOR descriptor, SECURITY_DESCRIPTOR_CONTROL which,
                                         SECURITY_DESCRIPTOR_CONTROL values) {
  constexpr int kSettable = SE_DACL_AUTO_INHERIT_REQ | SE_SACL_AUTO_INHERIT_REQ | SE_DACL_AUTO_INHERITED |
                            SE_SACL_AUTO_INHERITED | SE_DACL_PROTECTED | SE_SACL_PROTECTED;
  if ((which & ~kSettable) || (values & ~which)) return Fail(ERROR_INVALID_PARAMETER);
  auto* both = static_cast<SECURITY_DESCRIPTOR*>(descriptor);
  both->Control = static_cast<SECURITY_DESCRIPTOR_CONTROL>((both->Control & ~which) | values);
  return TRUE;
}

BOOL WINAPI GetSecurityDescriptorControl(PSECURITY_DESCRIPTOR descriptor,
                                         SECURITY_DESCRIPTOR_CONTROL* control, DWORD* revision) {
  Parts parts;
  if (!ReadParts(descriptor, parts)) return Fail(ERROR_INVALID_SECURITY_DESCR);
  *control = parts.control;
  *revision = SECURITY_DESCRIPTOR_REVISION;
  return TRUE;
}

BOOL WINAPI GetSecurityDescriptorOwner(PSECURITY_DESCRIPTOR descriptor, PSID* owner, BOOL* isDefault) {
  Parts parts;
  if (!ReadParts(descriptor, parts)) return Fail(ERROR_INVALID_SECURITY_DESCR);
  *owner = parts.owner;
  *isDefault = (parts.control & SE_OWNER_DEFAULTED) != 0;
  return TRUE;
}

BOOL WINAPI GetSecurityDescriptorGroup(PSECURITY_DESCRIPTOR descriptor, PSID* group, BOOL* isDefault) {
  Parts parts;
  if (!ReadParts(descriptor, parts)) return Fail(ERROR_INVALID_SECURITY_DESCR);
  *group = parts.group;
  *isDefault = (parts.control & SE_GROUP_DEFAULTED) != 0;
  return TRUE;
}

BOOL WINAPI GetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL* isPresent, ACL** list,
                                      BOOL* isDefault) {
  Parts parts;
  if (!ReadParts(descriptor, parts)) return Fail(ERROR_INVALID_SECURITY_DESCR);
  *isPresent = (parts.control & SE_DACL_PRESENT) != 0;
  if (!*isPresent) return TRUE;
  *list = parts.access;
  *isDefault = (parts.control & SE_DACL_DEFAULTED) != 0;
  return TRUE;
}

DWORD WINAPI GetSecurityDescriptorLength(PSECURITY_DESCRIPTOR descriptor) {
  Parts parts;
  if (!ReadParts(descriptor, parts)) return 0;
  return static_cast<DWORD>(sizeof(SECURITY_DESCRIPTOR_RELATIVE)) + SidRoom(parts.owner) +
         SidRoom(parts.group) + ListRoom(parts.access) + ListRoom(parts.audit);
}

BOOL WINAPI MakeSelfRelativeSD(PSECURITY_DESCRIPTOR descriptor, PSECURITY_DESCRIPTOR result, DWORD* size) {
  Parts parts;
  if (!size || !ReadParts(descriptor, parts)) return Fail(ERROR_INVALID_SECURITY_DESCR);
  if (parts.control & SE_SELF_RELATIVE) return Fail(ERROR_BAD_DESCRIPTOR_FORMAT);
  const DWORD needed = GetSecurityDescriptorLength(descriptor), room = *size;
  *size = needed;
  if (!result || room < needed) return Fail(ERROR_INSUFFICIENT_BUFFER);
  auto* const relative = static_cast<SECURITY_DESCRIPTOR_RELATIVE*>(result);
  memset(result, 0, needed);
  relative->Revision = SECURITY_DESCRIPTOR_REVISION;
  relative->Control = static_cast<SECURITY_DESCRIPTOR_CONTROL>(parts.control | SE_SELF_RELATIVE);
  DWORD at = sizeof(SECURITY_DESCRIPTOR_RELATIVE);
  const auto put = [&](const void* from, DWORD length) -> DWORD {
    if (!from) return 0;
    memcpy(static_cast<BYTE*>(result) + at, from, length);
    at += length;
    return at - length;
  };
  relative->Sacl = put(parts.audit, ListRoom(parts.audit));
  relative->Dacl = put(parts.access, ListRoom(parts.access));
  relative->Owner = put(parts.owner, SidRoom(parts.owner));
  relative->Group = put(parts.group, SidRoom(parts.group));
  return TRUE;
}
