// sessions.h
//
// Sessions of the machine: session 0 is that of services, and one is at the console. Before Windows
// Vista both are the same.
#pragma once
#include <cstdint>

namespace machine {

uint32_t ConsoleSession();
uint32_t OwnSession();  // of this process: the console's, where somebody sits there

}  // namespace machine
