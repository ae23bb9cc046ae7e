// operation_run.h
//
// What all operations have in common on the console: a worker with its record, the tick of the progress
// line, Ctrl+C, and the words at the end.
#pragma once
#include <string>
#include <vector>

#include "arguments.h"
#include "console_output.h"
#include "core/app_object.h"
#include "exit_code.h"
#include "operations/operation_context.h"

// A path that the last event of --json names.
struct NamedPath {
  const char* name;
  WString path;
};

// An operation whose decisions are made, ready for its worker.
struct PlannedRun {
  OperationKind kind = kBackupOperation;
  LPTHREAD_START_ROUTINE worker = nullptr;
  IniDocument* document = nullptr;
  WString subject;  // as the closing text names it
  uint32_t copyOptions = 0;
  uint32_t attributeMask = 0;
  double sourceVersion = 0.0;
  bool moves = false;
  const WStringArray* administrators = nullptr;  // see OperationContext
  const WStringArray* chosenPlaces = nullptr;    // as well
  // What isn't part of the run, in sentences (UTF-8). Each counts as an item that failed, and stands in
  // the log as those do.
  std::vector<std::string> leftOut;
  std::vector<NamedPath> paths;
};

// Runs it to its end. Gives the exit code.
ExitCode RunPlanned(const ConsoleArguments& arguments, const PlannedRun& run, AppObject& app,
                    ConsoleOutput& output);

// What a person should know before a run and what is no failure: on standard error, and an event.
void TellNotes(const ConsoleArguments& arguments, const std::vector<std::string>& notes,
               ConsoleOutput& output);
