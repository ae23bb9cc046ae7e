// version.h
//
// The version of the programs, and the one place that decides it: for their version resources, for what
// they say of themselves, and for the build, which reads it from here.
#pragma once

#define NORVANE_VERSION_NUMBERS 3, 0, 2, 0
#define NORVANE_VERSION_TEXT "3.0.2.0"
