// random_copy.h
//
// A random tree, copied over a random older state of its target by a random choice of options, compared
// with what a plain model of the engine's rules expects.
#pragma once
#include <cstdint>

// Fails the test, with the seed, where engine and model disagree.
void CheckRandomCopy(uint32_t seed);

// How many seeds from 1 on: the number in NORVANE_SEEDS, or else `usual`.
uint32_t SeedCount(uint32_t usual);
