// The list itself; acl_apply.cc puts it on files.
#include "foundation/acl_buffer.h"

namespace {

constexpr DWORD kListSize = 0x800;
constexpr BYTE kInheritanceFlags = NO_PROPAGATE_INHERIT_ACE | INHERIT_ONLY_ACE | INHERITED_ACE;
constexpr DWORD kSidOffset = 8;         // behind header and mask
constexpr DWORD kObjectSidOffset = 44;  // behind flags and two identifiers, too
constexpr DWORD kShortestSid = 8;       // without sub-authorities

struct AceKind {
  BYTE type;
  bool allows;
  DWORD sidOffset;
};

const AceKind kKinds[] = {
    {ACCESS_ALLOWED_ACE_TYPE, true, kSidOffset},
    {ACCESS_ALLOWED_CALLBACK_ACE_TYPE, true, kSidOffset},
    {ACCESS_ALLOWED_OBJECT_ACE_TYPE, true, kObjectSidOffset},
    {ACCESS_ALLOWED_CALLBACK_OBJECT_ACE_TYPE, true, kObjectSidOffset},
    {ACCESS_DENIED_ACE_TYPE, false, kSidOffset},
    {ACCESS_DENIED_CALLBACK_ACE_TYPE, false, kSidOffset},
    {ACCESS_DENIED_OBJECT_ACE_TYPE, false, kObjectSidOffset},
    {ACCESS_DENIED_CALLBACK_OBJECT_ACE_TYPE, false, kObjectSidOffset},
};

}  // namespace

bool ReadAce(ACL* acl, uint32_t index, AceRecord& record) {
  void* ace = nullptr;
  if (acl == nullptr || !GetAce(acl, index, &ace)) return false;
  const auto header = static_cast<ACE_HEADER*>(ace);
  for (const AceKind& kind : kKinds) {
    if (kind.type != header->AceType) continue;
    // A hive or disk that isn't ours may hold any bytes here.
    if (header->AceSize < kind.sidOffset + kShortestSid) return false;
    const auto sid = reinterpret_cast<SID*>(static_cast<BYTE*>(ace) + kind.sidOffset);
    if (header->AceSize < kind.sidOffset + kShortestSid + sid->SubAuthorityCount * 4u) return false;
    record.allows = kind.allows;
    record.isInheritanceRelated = (header->AceFlags & kInheritanceFlags) != 0;
    record.size = header->AceSize;
    record.sid = sid;
    record.kind = kind.type;
    return true;
  }
  return false;
}

AclBuffer::AclBuffer() : acl(nullptr) {}

AclBuffer::~AclBuffer() { LocalFree(acl); }

bool AclBuffer::Prepare() {
  LocalFree(acl);
  acl = static_cast<ACL*>(LocalAlloc(LMEM_FIXED | LMEM_ZEROINIT, kListSize));
  if (acl != nullptr && InitializeAcl(acl, kListSize, ACL_REVISION)) return true;
  LocalFree(acl);
  acl = nullptr;
  return false;
}

void AclBuffer::AddAllowAll(PSID sid, uint32_t aceFlags) {
  if (acl == nullptr || sid == nullptr || !IsValidSid(sid)) return;
  alignas(ACCESS_ALLOWED_ACE) BYTE space[kSidOffset + SECURITY_MAX_SID_SIZE] = {};
  const DWORD sidLength = GetLengthSid(sid);
  if (sidLength > SECURITY_MAX_SID_SIZE) return;
  const auto ace = reinterpret_cast<ACCESS_ALLOWED_ACE*>(space);
  ace->Header.AceType = ACCESS_ALLOWED_ACE_TYPE;
  ace->Header.AceFlags = static_cast<BYTE>(aceFlags);
  ace->Header.AceSize = static_cast<WORD>(sidLength + kSidOffset);
  ace->Mask = GENERIC_ALL;
  CopyMemory(&ace->SidStart, sid, sidLength);

  DWORD place = MAXDWORD;  // the end
  if ((aceFlags & kInheritanceFlags) == 0) {
    AceRecord record;
    place = acl->AceCount;
    while (place > 0 && (!ReadAce(acl, place - 1, record) || record.isInheritanceRelated)) --place;
  }
  AddAce(acl, ACL_REVISION, place, ace, ace->Header.AceSize);
}
