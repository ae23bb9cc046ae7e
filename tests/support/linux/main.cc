// The tests of the Linux build run on a machine folder that the test program makes for itself.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "machine/create_machine.h"
#include "machine/machine.h"

namespace {

bool UseNewMachine(const std::string& folder, std::string* error) {
  machine::MachinePlan plan;
  plan.seed = 1;  // the same SIDs in each run
  plan.consoleAccount = "Anna";
  plan.accounts.resize(1);
  plan.accounts[0].name = "Anna";
  plan.accounts[0].fullName = "Anna Berg";
  plan.accounts[0].type = machine::AccountType::kAdministrator;
  machine::Machine made;
  if (!machine::CreateMachine(folder, plan, error) || !machine::Machine::Open(folder, made, error))
    return false;
  std::filesystem::create_directory(folder + "/C/Test");
  machine::UseMachine(made);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  std::string folder = (std::filesystem::temp_directory_path() / "norvane-test.XXXXXX").string();
  if (!mkdtemp(folder.data())) {
    std::cerr << "no temporary folder: " << folder << "\n";
    return 1;
  }
  std::string error;
  int result = 1;
  if (UseNewMachine(folder, &error)) {
    result = RUN_ALL_TESTS();
    machine::LeaveMachine();
  } else {
    std::cerr << "no machine in " << folder << ": " << error << "\n";
  }
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  return result;
}
