// sample_machine.h
//
// A machine to try things on: three accounts of the three types, one of them at the console, and a few
// thousand files with all that makes the life of a backup hard. The same at each run.
#pragma once
#include <cstdint>
#include <string>

namespace machine {

struct SampleSummary {
  uint64_t files = 0, bytes = 0;
};

// `folder` must not exist or be empty. False with a sentence in `error`.
bool MakeSampleMachine(const std::string& folder, SampleSummary& summary, std::string* error);

}  // namespace machine
