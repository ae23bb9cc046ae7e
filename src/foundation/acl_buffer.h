// acl_buffer.h
//
// Building an access list and putting it on files and folders.
#pragma once
#include <windows.h>

#include <cstdint>

enum : uint32_t {
  kAclWholeTree = 0x01,     // of a folder; on anything else it means nothing
  kAclUnprotected = 0x02,   // inherits from the folder above, which is also what no bit means
  kAclProtected = 0x04,     // wins over kAclUnprotected
  kAclOwnerOnly = 0x08,     // the access list stays
  kAclKeepExplicit = 0x10,  // in a tree: what is below keeps the entries of its own
};

class AclBuffer {
 public:
  ACL* acl;  // from LocalAlloc, owned; null until Prepare

  AclBuffer();
  AclBuffer(const AclBuffer&) = delete;
  AclBuffer& operator=(const AclBuffer&) = delete;
  ~AclBuffer();

  // An empty list with room for 2048 bytes.
  bool Prepare();

  // Adds an entry that allows `sid` everything. One without the flags of inheritance (0x1C) goes in
  // front of the inherited ones, any other to the end. An invalid SID or a full list changes nothing.
  void AddAllowAll(PSID sid, uint32_t aceFlags);

  // Sets the list and, where it isn't null, the owner. Where rights are missing the ownership is taken
  // first. A link gets them itself, whatever it leads to, and is never followed in a tree, also if it
  // takes a folder's place under way. A file that has further names elsewhere is refused
  // (ERROR_TOO_MANY_LINKS). In a tree what is below the folder inherits from it; one item that fails
  // doesn't keep the rest, and the result is false.
  bool ApplyToPath(const wchar_t* path, uint32_t options, PSID owner);
};

// What an entry of an access list says.
struct AceRecord {
  bool allows;                // or denies
  bool isInheritanceRelated;  // any of the flags 0x1C
  uint32_t size;              // bytes
  PSID sid;                   // points into the list
  uint8_t kind;               // ACCESS_ALLOWED_ACE_TYPE and so on
};

// False for an entry that isn't there, whose kind isn't known, or that is too short for its SID.
bool ReadAce(ACL* acl, uint32_t index, AceRecord& record);
