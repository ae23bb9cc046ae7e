// protected_places.h
//
// Where a restore doesn't write of its own accord. Sets, disks and hives come from somewhere else, and
// the program runs with an administrator's rights: a path that one of them names isn't yet one that the
// person chose.
#pragma once
#include "foundation/wstring_array.h"
#include "users/user_table.h"

enum class PlaceProtection {
  kFree,
  kWindowsFolder,
  kProgramFolder,   // both Program Files and ProgramData
  kProfilesFolder,  // the folder of the profiles, or one that holds it
  kSystemRoot,      // the root of the system drive
  kForeignProfile,  // the profile of an account that isn't a target of this run
  kNoPath,          // no full path of plain names on a drive or a share
};

// What is protected, gathered once for a run.
class ProtectedPlaces {
 public:
  explicit ProtectedPlaces(const UserTable& accounts);

  // The profile of a target account of this run, into which it may write.
  void AddTargetProfile(const wchar_t* profile);

  // The one place that decides. `path` is looked at with its links resolved.
  PlaceProtection ProtectionOf(const wchar_t* path) const;

 private:
  PlaceProtection ProtectionOfReal(const WString& path) const;
  void AddProfilesOnDisk();

  WStringArray windowsFolders_, programFolders_, foreignProfiles_, targetProfiles_;
  WString profilesFolder_, systemRoot_;
};

// What is wrong with a place, to stand behind the place itself: "lies in the Windows folder". Empty for
// kFree.
const wchar_t* ProtectionText(PlaceProtection protection);
