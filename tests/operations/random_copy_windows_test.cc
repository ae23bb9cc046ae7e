#include <gtest/gtest.h>

#include "support/random_copy.h"

// Combinations of options, old files and names that nobody has thought of; fewer than on Linux, where a file
// costs less.
TEST(RandomCopy, AgreesWithAPlainModel) {
  for (uint32_t seed = 1; seed <= SeedCount(40) && !testing::Test::HasFailure(); seed++)
    CheckRandomCopy(seed);
}
