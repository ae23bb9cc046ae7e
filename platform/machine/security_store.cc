// security_store.cc
#include "machine/security_store.h"

#include <cerrno>
#include <cstring>

#include "machine/file_attributes.h"
#include "machine/kernel_calls.h"
#include "machine/token.h"

namespace machine {
namespace {

const char* AttributeName(bool isLink) {
  return isLink ? "trusted.norvane.security" : "user.norvane.security";
}

size_t SidSize(const uint8_t* sid) { return 8 + size_t{sid[1]} * 4; }

bool HoldsSid(const SecurityBytes& bytes, uint32_t offset) {
  return offset == 0 || (offset + 8 <= bytes.size() && bytes[offset] == SID_REVISION &&
                         offset + SidSize(&bytes[offset]) <= bytes.size());
}

// Calls `each` with every entry of a list; it gives false to end. False if the list isn't whole.
template <typename Each>
bool ForEachEntry(const ACL* list, Each each) {
  auto* bytes = reinterpret_cast<const uint8_t*>(list);
  size_t at = sizeof(ACL);
  for (WORD i = 0; i < list->AceCount; ++i) {
    auto* header = reinterpret_cast<const ACE_HEADER*>(bytes + at);
    if (at + sizeof(ACE_HEADER) > list->AclSize || header->AceSize < sizeof(ACE_HEADER) ||
        header->AceSize % 4 != 0 || at + header->AceSize > list->AclSize) {
      return false;
    }
    if (!each(*header)) return true;
    at += header->AceSize;
  }
  return true;
}

bool HoldsList(const SecurityBytes& bytes, uint32_t offset) {
  if (offset == 0) return true;
  if (offset % 4 != 0 || offset + sizeof(ACL) > bytes.size()) return false;
  auto* list = reinterpret_cast<const ACL*>(&bytes[offset]);
  return list->AclSize >= sizeof(ACL) && offset + list->AclSize <= bytes.size() &&
         ForEachEntry(list, [](const ACE_HEADER&) { return true; });
}

const SECURITY_DESCRIPTOR_RELATIVE& Header(const SecurityBytes& bytes) {
  return *reinterpret_cast<const SECURITY_DESCRIPTOR_RELATIVE*>(bytes.data());
}

bool IsValid(const SecurityBytes& bytes) {
  if (bytes.size() < sizeof(SECURITY_DESCRIPTOR_RELATIVE)) return false;
  const SECURITY_DESCRIPTOR_RELATIVE& header = Header(bytes);
  return header.Revision == SECURITY_DESCRIPTOR_REVISION && (header.Control & SE_SELF_RELATIVE) &&
         HoldsSid(bytes, header.Owner) && HoldsSid(bytes, header.Group) && HoldsList(bytes, header.Dacl);
}

struct Entry {
  uint8_t type;
  uint8_t flags;
  uint32_t mask;
  const void* sid;
};

// The entries that decide about access: allow and deny, plain and with object types.
bool ReadEntry(const ACE_HEADER& header, Entry& entry) {
  auto* bytes = reinterpret_cast<const uint8_t*>(&header);
  size_t sidAt = 8;
  if (header.AceType == ACCESS_ALLOWED_OBJECT_ACE_TYPE || header.AceType == ACCESS_DENIED_OBJECT_ACE_TYPE) {
    if (header.AceSize < 12) return false;
    uint32_t present;
    std::memcpy(&present, bytes + 8, 4);
    sidAt = 12 + (present & 1 ? 16 : 0) + (present & 2 ? 16 : 0);
  } else if (header.AceType != ACCESS_ALLOWED_ACE_TYPE && header.AceType != ACCESS_DENIED_ACE_TYPE) {
    return false;
  }
  if (sidAt + 8 > header.AceSize || sidAt + SidSize(bytes + sidAt) > header.AceSize) return false;
  entry.type = header.AceType;
  entry.flags = header.AceFlags;
  std::memcpy(&entry.mask, bytes + 4, 4);
  entry.sid = bytes + sidAt;
  return true;
}

void Append(std::vector<uint8_t>& bytes, const void* part, size_t size) {
  auto* first = static_cast<const uint8_t*>(part);
  bytes.insert(bytes.end(), first, first + size);
  while (bytes.size() % 4 != 0) bytes.push_back(0);
}

// Appends what `parent`'s list hands down, and gives the number of entries.
uint32_t AppendInherited(std::vector<uint8_t>& entries, const SecurityBytes& parent, bool isDirectory) {
  uint32_t count = 0;
  SecurityParts parts = PartsOf(parent);
  if (!parts.list) return 0;
  ForEachEntry(parts.list, [&](const ACE_HEADER& header) {
    uint8_t wanted = isDirectory ? CONTAINER_INHERIT_ACE | OBJECT_INHERIT_ACE : OBJECT_INHERIT_ACE;
    if (!(header.AceFlags & wanted)) return true;
    uint8_t flags = INHERITED_ACE;
    if (isDirectory && !(header.AceFlags & NO_PROPAGATE_INHERIT_ACE)) {
      flags |= header.AceFlags & (CONTAINER_INHERIT_ACE | OBJECT_INHERIT_ACE);
      // One that is meant for files only passes through a directory without effect there.
      if (!(header.AceFlags & CONTAINER_INHERIT_ACE)) flags |= INHERIT_ONLY_ACE;
    } else if (isDirectory && !(header.AceFlags & CONTAINER_INHERIT_ACE)) {
      return true;
    }
    size_t at = entries.size();
    Append(entries, &header, header.AceSize);
    entries[at + 1] = flags;
    ++count;
    return true;
  });
  return count;
}

}  // namespace

bool ReadSecurity(int directory, const char* name, SecurityBytes& security, bool isLink) {
  security.resize(512);
  for (;;) {
    ssize_t size = GetAttribute(directory, name, AttributeName(isLink), security.data(), security.size());
    if (size >= 0) {
      security.resize(static_cast<size_t>(size));
      if (IsValid(security)) return true;
      errno = EILSEQ;
      return false;
    }
    if (errno != ERANGE || security.size() >= kLongestAttribute) break;
    security.resize(kLongestAttribute);
  }
  security.clear();
  return errno == ENODATA || errno == EOPNOTSUPP;
}

bool WriteSecurity(int directory, const char* name, const SecurityBytes& security, bool isLink) {
  return SetAttribute(directory, name, AttributeName(isLink), security.data(), security.size()) == 0;
}

SecurityParts PartsOf(const SecurityBytes& security) {
  SecurityParts parts;
  if (security.empty()) return parts;
  const SECURITY_DESCRIPTOR_RELATIVE& header = Header(security);
  auto at = [&](uint32_t offset) { return const_cast<uint8_t*>(security.data()) + offset; };
  if (header.Owner) parts.owner = at(header.Owner);
  if (header.Group) parts.group = at(header.Group);
  parts.hasList = header.Control & SE_DACL_PRESENT;
  if (parts.hasList && header.Dacl) parts.list = reinterpret_cast<ACL*>(at(header.Dacl));
  parts.isProtected = header.Control & SE_DACL_PROTECTED;
  return parts;
}

SecurityBytes MakeSecurity(const SecurityParts& parts) {
  SECURITY_DESCRIPTOR_RELATIVE header{};
  header.Revision = SECURITY_DESCRIPTOR_REVISION;
  header.Control = SE_SELF_RELATIVE;
  if (parts.hasList) header.Control |= SE_DACL_PRESENT | SE_DACL_AUTO_INHERITED;
  if (parts.isProtected) header.Control |= SE_DACL_PROTECTED;
  SecurityBytes bytes(sizeof header);
  auto add = [&](const void* part, size_t size) {
    auto offset = static_cast<DWORD>(bytes.size());
    Append(bytes, part, size);
    return offset;
  };
  if (parts.owner) header.Owner = add(parts.owner, SidSize(static_cast<uint8_t*>(parts.owner)));
  if (parts.group) header.Group = add(parts.group, SidSize(static_cast<uint8_t*>(parts.group)));
  if (parts.list) header.Dacl = add(parts.list, parts.list->AclSize);
  std::memcpy(bytes.data(), &header, sizeof header);
  return bytes;
}

SecurityBytes InheritedSecurity(const SecurityBytes& parent, bool isDirectory) {
  if (parent.empty()) return {};
  std::vector<uint8_t> list(sizeof(ACL));
  ACL header{};
  header.AclRevision = ACL_REVISION;
  header.AceCount = static_cast<WORD>(AppendInherited(list, parent, isDirectory));
  header.AclSize = static_cast<WORD>(list.size());
  if (header.AceCount == 0) return {};
  std::memcpy(list.data(), &header, sizeof header);
  std::shared_ptr<Token> token = ThreadToken();
  SecurityParts parts;
  parts.owner = token->user.data();
  parts.hasList = true;
  parts.list = reinterpret_cast<ACL*>(list.data());
  return MakeSecurity(parts);
}

uint32_t MapGenericRights(uint32_t rights) {
  uint32_t mapped = rights & 0x01FFFFFF;
  if (rights & GENERIC_READ) mapped |= FILE_GENERIC_READ;
  if (rights & GENERIC_WRITE) mapped |= FILE_GENERIC_WRITE;
  if (rights & GENERIC_EXECUTE) mapped |= FILE_GENERIC_EXECUTE;
  if (rights & GENERIC_ALL) mapped |= FILE_ALL_ACCESS;
  return mapped;
}

uint32_t GrantedRights(const SecurityBytes& security) {
  uint32_t granted = HasPrivilege(kTakeOwnershipPrivilege) ? WRITE_OWNER : 0;
  if (HasPrivilege(kSecurityPrivilege)) granted |= ACCESS_SYSTEM_SECURITY;
  SecurityParts parts = PartsOf(security);
  if (!parts.list) return granted | FILE_ALL_ACCESS;
  std::shared_ptr<Token> token = ThreadToken();
  uint32_t denied = 0;
  if (parts.owner && token->Holds(parts.owner)) granted |= READ_CONTROL | WRITE_DAC;
  ForEachEntry(parts.list, [&](const ACE_HEADER& header) {
    Entry entry;
    if (!ReadEntry(header, entry) || (entry.flags & INHERIT_ONLY_ACE) || !token->Holds(entry.sid)) {
      return true;
    }
    bool isDenying = entry.type == ACCESS_DENIED_ACE_TYPE || entry.type == ACCESS_DENIED_OBJECT_ACE_TYPE;
    uint32_t mask = MapGenericRights(entry.mask);
    if (isDenying) {
      denied |= mask & ~granted;
    } else {
      granted |= mask & ~denied;
    }
    return true;
  });
  return granted;
}

}  // namespace machine
