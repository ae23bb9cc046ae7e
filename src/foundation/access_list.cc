#include "foundation/access_list.h"

namespace {

// Not every SDK names these.
constexpr SECURITY_INFORMATION kSetProtected = 0x80000000;
constexpr SECURITY_INFORMATION kSetUnprotected = 0x20000000;

constexpr DWORD kLargestList = 0xfffc;

// Of the entries alone.
DWORD UsedBytes(ACL* list) {
  DWORD size = 0;
  void* ace = nullptr;
  for (DWORD index = 0; list != nullptr && GetAce(list, index, &ace); ++index) {
    size += static_cast<ACE_HEADER*>(ace)->AceSize;
  }
  return size;
}

bool AddEntry(ACL* list, const ACE_HEADER* ace, BYTE flags) {
  const auto copy = std::make_unique<BYTE[]>(ace->AceSize);
  CopyMemory(copy.get(), ace, ace->AceSize);
  reinterpret_cast<ACE_HEADER*>(copy.get())->AceFlags = flags;
  return AddAce(list, list->AclRevision, MAXDWORD, copy.get(), ace->AceSize) != 0;
}

// The flags that an entry has at a child, or false if the child doesn't get it.
bool PassOn(BYTE flags, bool childIsDirectory, BYTE* passed) {
  const BYTE audit = flags & (SUCCESSFUL_ACCESS_ACE_FLAG | FAILED_ACCESS_ACE_FLAG);
  const BYTE inherit = flags & (OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE);
  if (!childIsDirectory) {
    *passed = audit | INHERITED_ACE;
    return (flags & OBJECT_INHERIT_ACE) != 0;
  }
  const bool goesDeeper = (flags & NO_PROPAGATE_INHERIT_ACE) == 0;
  if ((flags & CONTAINER_INHERIT_ACE) != 0) {
    *passed = audit | INHERITED_ACE | (goesDeeper ? inherit : 0);
    return true;
  }
  // For files only: a folder merely carries it to those that it holds.
  *passed = audit | INHERITED_ACE | INHERIT_ONLY_ACE | inherit;
  return inherit != 0 && goesDeeper;
}

}  // namespace

bool AddInherited(ACL* list, ACL* parent, bool childIsDirectory) {
  for (DWORD index = 0; parent != nullptr && index < parent->AceCount; ++index) {
    void* ace = nullptr;
    if (!GetAce(parent, index, &ace)) return false;
    const auto header = static_cast<ACE_HEADER*>(ace);
    BYTE flags = 0;
    if (PassOn(header->AceFlags, childIsDirectory, &flags) && !AddEntry(list, header, flags)) return false;
  }
  return true;
}

bool AddExplicit(ACL* list, ACL* from) {
  for (DWORD index = 0; from != nullptr && index < from->AceCount; ++index) {
    void* ace = nullptr;
    if (!GetAce(from, index, &ace)) return false;
    const auto header = static_cast<ACE_HEADER*>(ace);
    if ((header->AceFlags & INHERITED_ACE) == 0 && !AddEntry(list, header, header->AceFlags)) return false;
  }
  return true;
}

std::unique_ptr<BYTE[]> EmptyListFor(ACL* first, ACL* second) {
  const DWORD firstSize = UsedBytes(first), secondSize = UsedBytes(second);
  const DWORD size = sizeof(ACL) + firstSize + secondSize;
  if (size > kLargestList) return nullptr;
  BYTE revision = ACL_REVISION;
  for (const ACL* list : {first, second}) {
    if (list != nullptr && list->AclRevision > revision) revision = list->AclRevision;
  }
  auto space = std::make_unique<BYTE[]>(size);
  if (!InitializeAcl(reinterpret_cast<ACL*>(space.get()), size, revision)) return nullptr;
  return space;
}

bool SetSecurity(HANDLE file, ACL* list, PSID owner, bool isProtected) {
  SECURITY_DESCRIPTOR descriptor;
  if (!InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION)) return false;
  SECURITY_INFORMATION information = 0;
  if (owner != nullptr) {
    information |= OWNER_SECURITY_INFORMATION;
    if (!SetSecurityDescriptorOwner(&descriptor, owner, FALSE)) return false;
  }
  std::unique_ptr<BYTE[]> stored;
  if (list != nullptr) {
    information |= DACL_SECURITY_INFORMATION | (isProtected ? kSetProtected : kSetUnprotected);
    // The room that is left in the list would be kept with the file.
    const DWORD size = sizeof(ACL) + UsedBytes(list);
    stored = std::make_unique<BYTE[]>(size);
    CopyMemory(stored.get(), list, size);
    const auto trimmed = reinterpret_cast<ACL*>(stored.get());
    trimmed->AclSize = static_cast<WORD>(size);
    constexpr SECURITY_DESCRIPTOR_CONTROL kInherits = SE_DACL_AUTO_INHERIT_REQ | SE_DACL_AUTO_INHERITED;
    if (!SetSecurityDescriptorDacl(&descriptor, TRUE, trimmed, FALSE) ||
        !SetSecurityDescriptorControl(&descriptor, SE_DACL_PROTECTED | kInherits,
                                      isProtected ? SE_DACL_PROTECTED : kInherits)) {
      return false;
    }
  }
  return SetKernelObjectSecurity(file, information, &descriptor) != 0;
}

bool ReadList::Read(HANDLE file) {
  list_ = nullptr;
  DWORD size = 0;
  GetKernelObjectSecurity(file, DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  if (size == 0) return false;
  descriptor_ = std::make_unique<BYTE[]>(size);
  if (!GetKernelObjectSecurity(file, DACL_SECURITY_INFORMATION, descriptor_.get(), size, &size)) return false;
  BOOL isPresent = FALSE, isDefault = FALSE;
  if (!GetSecurityDescriptorDacl(descriptor_.get(), &isPresent, &list_, &isDefault)) return false;
  if (!isPresent) list_ = nullptr;
  return true;
}
