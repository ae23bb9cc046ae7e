// system_hives.h
//
// The hives of the system itself as a new machine has them.
#pragma once
#include "machine/create_machine.h"
#include "machine/hive.h"

namespace machine {

// SOFTWARE: the version, ProfileList with the accounts that have profiles, and both views.
HivePlan SoftwareHive(const MachinePlan& plan, const std::vector<Account>& accounts,
                      const std::vector<std::string>& profiles);  // in the order of the accounts; empty: none

// What ProfileList has of an account's profile.
HivePlan ProfileListEntry(const std::string& sid, const std::string& profile);

HivePlan SystemHive(const MachinePlan& plan);

}  // namespace machine
