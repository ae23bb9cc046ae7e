#include "operations/operation_text.h"

#include <gtest/gtest.h>

#include "support/test_place.h"

namespace {

// The heads as log readers and people know them, in both outcomes.
TEST(OperationText, NamesWhatWasDone) {
  struct Case {
    OperationSubject subject;
    const char* done;
    const char* failed;
  };
  const Case cases[] = {
      {{kBackupOperation, false, L"X"},
       "Successfully backed up user data to \"X\"",
       "Failed to backup user data to \"X\""},
      {{kRestoreOperation, false, L"X"},
       "Successfully restored a backup named \"X\"",
       "Failed to restore a backup named \"X\""},
      {{kRestoreFromOperation, false, L"D:\\"},
       "Successfully restored user data from \"D:\\\"",
       "Failed to restore user data from \"D:\\\""},
      {{kCopyMoveOperation, false, L"C:\\A"},
       "Successfully copied user data from \"C:\\A\"",
       "Failed to copy user data from \"C:\\A\""},
      {{kCopyMoveOperation, true, L"C:\\A"},
       "Successfully moved user data from \"C:\\A\"",
       "Failed to move user data from \"C:\\A\""},
  };
  for (const Case& given : cases) {
    OperationContext context;
    EXPECT_EQ(Utf8(OperationResultText(given.subject, context, TextForm::kLogged)),
              std::string(given.failed) + " The operation could not be started.");
    context.outcome = OperationOutcome::kStopped;
    context.failures = 3;
    EXPECT_EQ(Utf8(OperationResultText(given.subject, context, TextForm::kShown)),
              std::string(given.failed) + "\r\nThe operation was cancelled.");
    context.outcome = OperationOutcome::kComplete;
    context.failures = 0;
    EXPECT_EQ(Utf8(OperationResultText(given.subject, context, TextForm::kShown)), given.done);
  }
}

// A person must not learn "successfully" alone where items are missing.
TEST(OperationText, TellsWhatIsMissing) {
  const OperationSubject subject = {kBackupOperation, false, L"X"};
  const std::string head = "Successfully backed up user data to \"X\"";
  OperationContext context;
  context.outcome = OperationOutcome::kFailures;
  context.failures = 12;
  EXPECT_EQ(Utf8(OperationResultText(subject, context, TextForm::kShown)),
            head + "\r\n12 items could not be copied. The application log lists them.");
  context.logFailed = true;
  context.targetFull = true;
  context.linksSkipped = 2;
  EXPECT_EQ(Utf8(OperationResultText(subject, context, TextForm::kLogged)),
            head +
                " 12 items could not be copied. The application log could not be written."
                " The disk that was written to is full. 2 links were left out.");
  context.failures = 1;
  context.logFailed = context.targetFull = false;
  context.linksSkipped = 1;
  EXPECT_EQ(Utf8(OperationResultText(subject, context, TextForm::kShown)),
            head + "\r\n1 item could not be copied. The application log lists it.\r\n1 link was left out.");
}

}  // namespace
