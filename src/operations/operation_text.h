// operation_text.h
//
// What a person is told about a run when it has ended, in words.
#pragma once
#include "operations/operation_context.h"

// What was asked for, as the text names it: "backed up user data to "Anna's PC"".
struct OperationSubject {
  OperationKind kind = kBackupOperation;
  bool isMove = false;            // of kCopyMoveOperation
  const wchar_t* name = nullptr;  // name of the backup, or path of the source; without quotation marks
};

enum class TextForm {
  kShown,   // parts divided by line breaks, for boxes and the console
  kLogged,  // parts divided by blanks, one line
};

// The result of the run that `context` records: "Successfully …" or "Failed to …", and behind it what
// failed and why, how many links were left out, and whether the target's disk was full.
WString OperationResultText(const OperationSubject& subject, const OperationContext& context, TextForm form);
