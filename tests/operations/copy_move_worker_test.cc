#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/operation_run.h"

namespace {

using testing::ElementsAre;

void FillProfile(OperationRun& run) {
  for (const char* file : {"NTUSER.DAT", "AppData/Roaming/a", "AppData/Roaming/Microsoft/Windows/SendTo/b",
                           "AppData/Roaming/Microsoft/Windows/Recent/no", "AppData/Local/c",
                           "AppData/LocalLow/d", "AppData/Other/no", "Documents/e", "Music/f", "Contacts/g",
                           "Application Data/h", "Local Settings/i", "loose"})
    run.files.File(std::string("from/") + file, file);
}

// A profile's hive over another account's, or data that is left behind or copied twice.
TEST(CopyMoveWorker, TakesTheFoldersOfAProfile) {
  const struct {
    uint32_t mask;
    std::vector<std::string> files;
  } cases[] = {{0, {}},
               {4, {"Documents/e"}},
               {1,
                {"AppData/Local/c", "AppData/LocalLow/d", "AppData/Roaming/Microsoft/Windows/SendTo/b",
                 "AppData/Roaming/a"}},
               {128, {"Application Data/h", "Contacts/g", "Local Settings/i"}},
               {2 + 8 + 32 + 64, {}}};
  for (const auto& test : cases) {
    CopyMoveRun run(test.mask);
    FillProfile(run);
    run.Run();
    EXPECT_EQ(run.context->outcome, OperationOutcome::kComplete) << testing::PrintToString(run.told);
    EXPECT_EQ(run.files.Exists("to") ? run.files.Files("to") : std::vector<std::string>(), test.files)
        << test.mask;
  }
}

// A selection that nobody has looked at, and a folder that is moved into itself.
TEST(CopyMoveWorker, RefusesAFolderInsideItself) {
  CopyMoveRun run(0, false, true);
  FillProfile(run);
  run.document.SetValue(L"Settings", L"CMDstFolder", (run.files / "from/Documents/to").CStr());
  const std::vector<std::string> before = run.files.List("from");
  run.Run();
  EXPECT_EQ(run.files.List("from"), before);
  EXPECT_EQ(run.context->failures, 1);
  EXPECT_TRUE(run.IsTold("Error! Source and destination are in each other: "));
}

// Files that a person has changed since are gone, or a choice to overwrite has no effect.
TEST(CopyMoveWorker, OverwritesOnlyWhenAsked) {
  for (const bool isMove : {false, true}) {
    for (const bool onlyMissing : {false, true}) {
      CopyMoveRun run(5, true, isMove);
      FillProfile(run);
      run.files.File("to/Documents/e", "newer");
      run.files.File("to/AppData/Local/c", "newer");
      if (onlyMissing) run.OnlyMissing();
      run.Run();
      EXPECT_EQ(run.files.Read("to/Documents/e"), onlyMissing ? "newer" : "Documents/e");
      EXPECT_EQ(run.files.Exists("from/Documents/e"), onlyMissing || !isMove);
      EXPECT_EQ(run.files.Read("to/AppData/Local/c"), "AppData/Local/c") << "the choice isn't for these";
    }
  }
}

// A file that is moved and is at neither side, or one that wasn't chosen and is moved away.
TEST(CopyMoveWorker, MovesWhatItTakesAndNothingElse) {
  CopyMoveRun run(1 + 4, true, true);
  FillProfile(run);
  run.context->attributeMask = FILE_ATTRIBUTE_HIDDEN;
  SetAttributes(run.files.File("from/Documents/hidden").CStr(), FILE_ATTRIBUTE_HIDDEN);
  run.Run();
  EXPECT_EQ(run.context->failures, 0) << testing::PrintToString(run.told);
  EXPECT_THAT(run.files.Files("to"),
              ElementsAre("AppData/Local/c", "AppData/LocalLow/d",
                          "AppData/Roaming/Microsoft/Windows/SendTo/b", "AppData/Roaming/a", "Documents/e"));
  EXPECT_THAT(
      run.files.Files("from"),
      ElementsAre("AppData/Other/no", "AppData/Roaming/Microsoft/Windows/Recent/no", "Application Data/h",
                  "Contacts/g", "Documents/hidden", "Local Settings/i", "Music/f", "NTUSER.DAT", "loose"));
}

}  // namespace
