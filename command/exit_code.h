// exit_code.h
//
// What norvanectl tells the script that called it.
#pragma once

enum ExitCode : int {
  kExitDone = 0,         // everything that was asked for is done
  kExitFailures = 1,     // done, but items failed; each is in the log and on standard error
  kExitUsage = 2,        // wrong usage
  kExitStopped = 3,      // stopped by the user
  kExitNothingDone = 4,  // it couldn't start or couldn't do anything
};
