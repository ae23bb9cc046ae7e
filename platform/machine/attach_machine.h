// attach_machine.h
//
// A machine folder around a Windows disk that is mounted, or was copied, somewhere on this system. Nothing
// is written to the disk.
#pragma once
#include <map>
#include <string>
#include <vector>

namespace machine {

struct AttachPlan {
  std::map<char, std::string> drives;  // letter -> folder; one of them holds the Windows
  std::string readOnlyDrives;          // letters beside that of the Windows
  bool isWritable = false;             // whether the drive of the Windows may be changed later on
  std::string timeZone;
};

// "C=/mnt/disk". False with a sentence in `error`.
bool ParseAttachedDrive(const std::string& text, AttachPlan& plan, std::string* error);

// Makes the folder, which must not exist or be empty, and leaves its machine in use. `warnings` gets a
// sentence for each thing that was found wanting. False with a sentence in `error`.
bool AttachMachine(const std::string& folder, const AttachPlan& plan, std::vector<std::string>& warnings,
                   std::string* error);

}  // namespace machine
