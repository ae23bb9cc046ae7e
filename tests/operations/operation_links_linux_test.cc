// Links that somebody has planted: in a set, in an old disk, in a profile. Wine can't make them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "machine/faults.h"
#include "operations/protected_places.h"
#include "support/operation_run.h"

namespace {

using testing::IsEmpty;

// A set of a stranger's that has an administrator read what the stranger may not, at every place of its
// layout.
TEST(RestoreLinks, OfTheSourceAreNotFollowed) {
  const struct {
    const char* link;
    bool isFailure;
  } cases[] = {{"Users", true},
               {"Users/Anna", true},
               {"Users/Anna/Documents", true},
               {"Users/Anna/Contacts", false},
               {"Users/Anna/AppData", true},
               {"Users/Anna/AppData/Microsoft", false},
               {"Users/Anna/AppData/Microsoft/Windows", false},
               {"Users/Anna/AppData/Microsoft/Windows/Themes", false},
               {"Users/Anna/LocalAppData", true},
               {"Users/Anna/AppData/LocalLow", true},
               {"Users/Anna/Documents/deep", false},
               {"ExtraFolders", true},
               {"ExtraFolders/ABC", true}};
  for (const auto& test : cases) {
    RestoreRun run;
    run.machine.Add({.name = "Bob"});
    for (const char* file : {"a", "Anna/a", "Anna/Documents/a", "Documents/a", "Microsoft/Windows/Themes/a",
                             "Windows/Themes/a", "Themes/a", "ABC/a"})
      run.files.File(std::string("outside/") + file, "secret");
    run.files.File("set/Users/Anna/Music/good");
    if (std::string(test.link) == "Users" || std::string(test.link) == "Users/Anna") {
      for (const char* name : {"set/Users/Anna/Music/good"}) DeleteFileW((run.files / name).CStr());
      for (const char* name : {"set/Users/Anna/Music", "set/Users/Anna"})
        RemoveDirectoryW((run.files / name).CStr());
      if (std::string(test.link) == "Users") RemoveDirectoryW((run.files / "set/Users").CStr());
    }
    run.files.Link(std::string("set/") + test.link, "outside");
    run.Select(255, {{"Anna", "Bob"}});
    run.SelectExtra("ABC", run.files / "back");
    run.Run();
    for (const char* folder : {"Users", "back"}) {
      if (!run.files.Exists(folder)) continue;
      for (const std::string& path : run.files.List(folder)) {
        const WString whole = run.files / (std::string(folder) + "/" + path);
        const bool isFolder = Attributes(whole.CStr()) & FILE_ATTRIBUTE_DIRECTORY;
        EXPECT_TRUE(isFolder || ReadBytes(whole.CStr()) != "secret") << path << ", " << test.link;
      }
    }
    EXPECT_EQ(run.context->failures > 0, test.isFailure) << test.link << testing::PrintToString(run.told);
    EXPECT_TRUE(run.context->failures + run.context->linksSkipped > 0) << test.link << " went without a word";
  }
}

// An account that turns its folders into links has an administrator's restore write where it may not.
TEST(RestoreLinks, OfTheProfileAreNotFollowedBelowItsFolders) {
  for (const char* link : {"Contacts", "Documents/deep", "AppData/Roaming/Microsoft",
                           "AppData/Roaming/Microsoft/Windows", "AppData/Local/deep"}) {
    RestoreRun run;
    run.machine.Add({.name = "Eve"});
    for (const char* file : {"Contacts/a", "Documents/deep/a", "AppData/Microsoft/Windows/Themes/a",
                             "LocalAppData/deep/a", "Music/good"})
      run.files.File(std::string("set/Users/Anna/") + file);
    run.files.Folder("outside");
    run.files.Link(std::string("Users/Eve/") + link, "outside");
    run.Select(255, {{"Anna", "Eve"}});
    run.Run();
    EXPECT_THAT(run.files.List("outside"), IsEmpty()) << link;
    EXPECT_TRUE(run.IsTold("Error! Could not create destination directory: ~\\Users\\Eve\\")) << link;
    EXPECT_TRUE(run.files.Exists("Users/Eve/Music/good")) << link;
  }
}

// People move whole folders to another disk by a junction. That is taken as it is, unless it leads to where
// no restore writes.
TEST(RestoreLinks, ThatAreFoldersOfTheProfileThemselves) {
  struct {
    const char* target;
    bool isTaken;
  } cases[] = {{"Big disk/Documents", true}, {"Users/Anna/Documents", false}};
  for (const auto& test : cases) {
    RestoreRun run;
    run.machine.Add({.name = "Anna"});
    std::vector<TestValue> hive = run.machine.UsualFolders("Eve");
    run.machine.Add({.name = "Eve", .hive = hive});
    run.files.Folder(test.target);
    run.files.File("set/Users/Anna/Documents/a");
    RemoveDirectoryW((run.files / "Users/Eve/Documents").CStr());
    run.files.Link("Users/Eve/Documents", test.target);
    run.Select(4, {{"Anna", "Eve"}});
    run.Run();
    EXPECT_EQ(run.files.Exists(std::string(test.target) + "/a"), test.isTaken)
        << testing::PrintToString(run.told);
    EXPECT_EQ(run.IsTold("Error! Left out protected user folder: HKU\\"), !test.isTaken);
  }
}

// A profile of today has links under the names that an older system gave its folders. Refused as others
// are, they would leave the documents of every old disk behind.
TEST(RestoreLinks, ThatStayInTheProfileAreTaken) {
  RestoreRun run;
  run.machine.Add({.name = "Eve"});
  run.files.File("set/Users/Anna/My Documents/letter");
  run.files.Link("Users/Eve/My Documents", "Users/Eve/Documents");
  run.Select(128, {{"Anna", "Eve"}});
  run.Run();
  EXPECT_TRUE(run.files.Exists("Users/Eve/Documents/letter")) << testing::PrintToString(run.told);
  EXPECT_EQ(run.context->failures, 0);
}

TEST(CopyMoveLinks, AreNotFollowedBelowTheTwoFolders) {
  for (const bool isMove : {false, true}) {
    for (const char* link : {"AppData", "AppData/Roaming", "AppData/Roaming/Microsoft", "Documents",
                             "Contacts", "Documents/deep"}) {
      for (const char* side : {"from", "to"}) {
        CopyMoveRun run(1 + 4 + 128, true, isMove);
        const bool isSource = std::string(side) == "from";
        for (const char* file :
             {"Roaming/a", "Microsoft/Windows/Themes/a", "Windows/Themes/a", "a", "deep/a"})
          run.files.File(std::string("outside/") + file, "secret");
        const std::vector<std::string> outside = run.files.List("outside");
        if (!isSource) {
          for (const char* file : {"AppData/Roaming/x", "AppData/Roaming/Microsoft/Windows/Themes/x",
                                   "Documents/deep/x", "Contacts/x"})
            run.files.File(std::string("from/") + file);
        }
        run.files.Link(std::string(side) + "/" + link, "outside");
        run.Run();
        const std::string when = std::string(side) + "/" + link;
        EXPECT_EQ(run.files.List("outside"), outside) << when;
        if (isSource && run.files.Exists("to")) {
          for (const std::string& path : run.files.List("to"))
            EXPECT_NE(path.substr(path.rfind('/') + 1), "a") << when;
        }
        EXPECT_TRUE(run.context->failures + run.context->linksSkipped > 0) << when << " went without a word";
      }
    }
  }
}

// A path that reaches the system by a junction.
TEST(ProtectedPlacesLinks, AreSeenThrough) {
  AccountPlace machine;
  machine.Add({.name = "Anna"});
  machine.files.Folder("real");
  machine.files.Link("way", "Users");
  machine.files.Link("fine", "real");
  const ProtectedPlaces places(*LoadUserTable());
  EXPECT_EQ(places.ProtectionOf((machine.files / "way/Anna/Documents").CStr()),
            PlaceProtection::kForeignProfile);
  EXPECT_EQ(places.ProtectionOf((machine.files / "fine/x").CStr()), PlaceProtection::kFree);
}

// What was copied counts as done only when it is on the disk, also where the first folder had no source.
TEST(PhaseRunner, FlushesADiskWhoseFirstTargetWasNotMade) {
  RestoreRun run;
  run.machine.Add({.name = "Bob"});
  run.files.File("set/ExtraFolders/B/x");
  run.SelectExtra("A", run.files / "missing");
  run.SelectExtra("B", run.files / "back");
  int flushes = 0;
  machine::FaultPlan plan;
  plan.call = "FlushFileBuffers";
  plan.before = [&flushes](std::string_view, std::string_view) { flushes++; };
  machine::SetFaults(plan);
  run.Run();
  machine::ClearFaults();
  EXPECT_EQ(flushes, 1);
  EXPECT_TRUE(run.files.Exists("back/x"));
}

}  // namespace
