// show_machine.h
//
// What norvane-machine shows of the machine in use.
#pragma once
#include <cstdio>
#include <string>
#include <vector>

namespace machine {

// Settings, drives, accounts with their profiles, processes.
void ShowMachine(FILE* output);

// The subkeys and values of a key in the notation HKLM64\SOFTWARE\…: a root, a view (64, 32, or none for
// that of a 32-bit process) and a path. Below HKU an account's hive is loaded for it, by SID or by name.
// False with a sentence in `error`.
bool ShowKey(const std::string& path, FILE* output, std::string* error);

// The attributes of a file, after `changes` such as "+R" and "-H" were made. False with a sentence.
bool ShowAttributes(const std::string& path, const std::vector<std::string>& changes, FILE* output,
                    std::string* error);

// The reason of a Windows error in words, with its number.
std::string ErrorReason(unsigned error);

}  // namespace machine
