#include "support/registry_place.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "machine/create_machine.h"
#include "machine/machine.h"

struct RegistryPlace::Before {
  machine::Machine machine = machine::ThisMachine();
  std::string folder = (std::filesystem::temp_directory_path() / "norvane-registry.XXXXXX").string();
};

RegistryPlace::RegistryPlace() : before_(std::make_unique<Before>()) {
  machine::MachinePlan plan;
  machine::AccountPlan anna;
  anna.name = "Anna";
  anna.type = machine::AccountType::kAdministrator;
  plan.accounts.push_back(anna);
  plan.consoleAccount = "Anna";
  std::string error;
  machine::Machine machine;
  if (!mkdtemp(before_->folder.data()) || !machine::CreateMachine(before_->folder, plan, &error) ||
      !machine::Machine::Open(before_->folder, machine, &error)) {
    ADD_FAILURE() << "no machine: " << error;
    return;
  }
  machine::UseMachine(machine);
}

RegistryPlace::~RegistryPlace() {
  machine::UseMachine(before_->machine);
  std::error_code ignored;
  std::filesystem::remove_all(before_->folder, ignored);
}
