// access_list.h
//
// The access list of one open file or folder: read, put together with what the folder above passes on,
// and set on nothing but this. The system's own calls with names work this out too, but they then walk
// through everything below, and go where links lead.
#pragma once
#include <windows.h>

#include <memory>

// Adds to `list`, which needs the room, what a child inherits from `parent` (null: nothing): all entries
// that are passed on, marked as inherited, in their order. Placeholders such as the creator's stay as
// they are. False if `list` has no room or either is damaged.
bool AddInherited(ACL* list, ACL* parent, bool childIsDirectory);

// Adds the entries of `from` (null: none) that aren't inherited.
bool AddExplicit(ACL* list, ACL* from);

// An empty list with room for the entries of both, of which each may be null. Null if that is more than a
// list can hold.
std::unique_ptr<BYTE[]> EmptyListFor(ACL* first, ACL* second);

// Sets `list` and `owner`, of which each may be null to stay as it is. The handle needs WRITE_DAC and
// WRITE_OWNER for them. False with the reason in GetLastError().
bool SetSecurity(HANDLE file, ACL* list, PSID owner, bool isProtected);

// The access list of an open file or folder. Holds the whole descriptor that the list points into.
class ReadList {
 public:
  // False with the reason in GetLastError(). The handle needs READ_CONTROL.
  bool Read(HANDLE file);
  ACL* Get() const { return list_; }  // null: no list, everybody may do everything

 private:
  std::unique_ptr<BYTE[]> descriptor_;
  ACL* list_ = nullptr;
};
