// security_store.h
//
// Where owners and access lists lie: a self-relative security descriptor in the extended attribute
// user.norvane.security. A file without one has no list, and everybody may do everything with it. A link
// takes no attributes of users; its descriptor is trusted.norvane.security, which root alone may use.
#pragma once
#include <windows.h>

#include <cstdint>
#include <vector>

namespace machine {

using SecurityBytes = std::vector<uint8_t>;  // self-relative and valid, or empty

// Names as in kernel_calls.h. False with errno; a file without a descriptor is no failure and gives an
// empty one. Bytes that are no valid descriptor give EILSEQ.
bool ReadSecurity(int directory, const char* name, SecurityBytes& security, bool isLink = false);
bool WriteSecurity(int directory, const char* name, const SecurityBytes& security, bool isLink = false);

// The parts of a descriptor; null where it has none.
struct SecurityParts {
  PSID owner = nullptr;
  PSID group = nullptr;
  ACL* list = nullptr;       // the discretionary one
  bool hasList = false;      // without one everybody may do everything; an empty one lets nobody in
  bool isProtected = false;  // takes over nothing from the directory above
};
SecurityParts PartsOf(const SecurityBytes& security);  // pointers into `security`
SecurityBytes MakeSecurity(const SecurityParts& parts);

// What a new file or directory takes over from the descriptor of the directory that it is made in; empty
// if nothing there is for it.
SecurityBytes InheritedSecurity(const SecurityBytes& parent, bool isDirectory);

// The rights that the calling thread has, as FILE_… and standard rights, from the list, the owner and
// SE_TAKE_OWNERSHIP. Generic rights of the list are resolved.
uint32_t GrantedRights(const SecurityBytes& security);

// Generic rights as a file knows them.
uint32_t MapGenericRights(uint32_t rights);

}  // namespace machine
