// fuzz_machine.h
//
// A machine folder with the account Anna for a fuzzer, made at its first use and removed at the end of the
// process.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

// The folder of drive C on the disk, with an empty folder "Test" in it.
const std::string& FuzzDrive();

// Writes the bytes straight to the disk, so that no part of the program is in between.
void WriteOnDisk(const std::string& file, const uint8_t* data, size_t size);
std::string ReadFromDisk(const std::string& file);

// Ends the process, which the fuzzer takes for a fault, if `isTrue` isn't.
void Require(bool isTrue, const char* what);
