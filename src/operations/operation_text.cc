#include "operations/operation_text.h"

namespace {

struct Words {
  const wchar_t* done;    // behind "Successfully "
  const wchar_t* failed;  // behind "Failed to "
  const wchar_t* object;  // in front of the name
};

Words WordsOf(const OperationSubject& subject) {
  switch (subject.kind) {
    case kBackupOperation:
      return {L"backed up", L"backup", L" user data to "};
    case kRestoreOperation:
      return {L"restored", L"restore", L" a backup named "};
    case kRestoreFromOperation:
      return {L"restored", L"restore", L" user data from "};
    case kCopyMoveOperation:
      break;
  }
  if (subject.isMove) return {L"moved", L"move", L" user data from "};
  return {L"copied", L"copy", L" user data from "};
}

WString Counted(int64_t count, const wchar_t* one, const wchar_t* many) {
  WString text;
  text.FromUInt64(static_cast<uint64_t>(count));
  text.Append(count == 1 ? one : many);
  return text;
}

class ResultText {
 public:
  explicit ResultText(TextForm form) : divider_(form == TextForm::kShown ? L"\r\n" : L" ") {}

  void Add(const WString& part) {
    if (!text_.IsEmpty()) text_.Append(divider_);
    text_.Append(part.CStr());
  }
  const WString& Text() const { return text_; }

 private:
  const wchar_t* divider_;
  WString text_;
};

WString Head(const OperationSubject& subject, bool isSuccess) {
  Words words = WordsOf(subject);
  WString head;
  head.Concat(isSuccess ? L"Successfully " : L"Failed to ", isSuccess ? words.done : words.failed,
              words.object, L"\"", subject.name, L"\"");
  return head;
}

void AddFailures(ResultText& text, const OperationContext& context) {
  int64_t failures = context.failures;
  if (failures == 0) return;
  WString part = Counted(failures, L" item could not be copied.", L" items could not be copied.");
  if (context.logFailed) {
    part.Append(L" The application log could not be written.");
  } else {
    part.Append(failures == 1 ? L" The application log lists it." : L" The application log lists them.");
  }
  text.Add(part);
  if (context.targetFull) text.Add(L"The disk that was written to is full.");
}

void AddCreatedAccounts(ResultText& text, const OperationContext& context) {
  const WStringArray& accounts = context.createdAccounts;
  if (accounts.count == 0) return;
  WString part(accounts.count == 1 ? L"The account " : L"The accounts ");
  for (uint32_t i = 0; i < accounts.count; i++) {
    if (i > 0) part.Append(L", ");
    part.Append(L"\"").Append(accounts[i].CStr()).Append(L"\"");
  }
  part.Append(accounts.count == 1 ? L" was" : L" were");
  text.Add(part.Append(L" created without a password."));
}

}  // namespace

WString OperationResultText(const OperationSubject& subject, const OperationContext& context, TextForm form) {
  OperationOutcome outcome = context.outcome;
  bool isSuccess = outcome == OperationOutcome::kComplete || outcome == OperationOutcome::kFailures;
  ResultText text(form);
  text.Add(Head(subject, isSuccess));
  if (outcome == OperationOutcome::kStopped) text.Add(L"The operation was cancelled.");
  if (outcome == OperationOutcome::kNotStarted) text.Add(L"The operation could not be started.");
  AddCreatedAccounts(text, context);
  if (!isSuccess) return text.Text();
  AddFailures(text, context);
  int64_t links = context.linksSkipped;
  if (links > 0) text.Add(Counted(links, L" link was left out.", L" links were left out."));
  return text.Text();
}
