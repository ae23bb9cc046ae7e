// machine_settings.h
//
// For tests that look at the machine's settings: what a test changes is put back at its end.
#pragma once
#include "machine/machine.h"

class ChangedSettings {
 public:
  machine::MachineSettings& settings = machine::ThisMachine().settings;

  ChangedSettings() = default;
  ~ChangedSettings() { settings = before_; }

 private:
  machine::MachineSettings before_ = machine::ThisMachine().settings;
};
