// random_restore.h
//
// The whole way: a random machine, its backup, and a restore of it onto another random machine, compared
// with what a plain model says must come back.
#pragma once
#include <cstdint>

// Fails the test, with the seed and how to run it alone, where the program and the model disagree.
void CheckRandomRestore(uint32_t seed);
