// console.h
//
// The console front end, called by the program's entry on each system.
#pragma once

// Runs `norvanectl` with its arguments in UTF-8 (lone surrogates in three bytes, too). `arguments[0]`
// is the program's name. Gives the exit code.
extern "C" int NorvaneConsoleMain(int count, const char* const* arguments);
