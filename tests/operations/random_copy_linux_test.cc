#include <gtest/gtest.h>

#include "support/random_copy.h"

// Combinations of options, old files and names that nobody has thought of.
TEST(RandomCopy, AgreesWithAPlainModel) {
  for (uint32_t seed = 1; seed <= SeedCount(300) && !testing::Test::HasFailure(); seed++)
    CheckRandomCopy(seed);
}
