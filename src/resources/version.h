// version.h
//
// The version of the programs, for their version resources and for what they say of themselves.
#pragma once

#define NORVANE_VERSION_NUMBERS 3, 0, 2, 0
#define NORVANE_VERSION_TEXT "3.0.2.0"
