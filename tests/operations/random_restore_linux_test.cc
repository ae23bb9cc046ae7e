#include "support/random_restore.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/random_copy.h"

// Combinations of machines, folders, names, options and old files that nobody has thought of: a file that
// doesn't come back, or comes back as somebody else's.
TEST(RandomRestore, BringsBackWhatAPlainModelSays) {
  const char* text = std::getenv("NORVANE_FIRST_SEED");
  const uint32_t first = text ? static_cast<uint32_t>(std::strtoul(text, nullptr, 10)) : 1;
  const uint32_t end = first + SeedCount(500);
  for (uint32_t seed = first; seed < end && !testing::Test::HasFailure(); seed++) CheckRandomRestore(seed);
}
