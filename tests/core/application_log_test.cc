#include "core/application_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "foundation/unique_handle.h"
#include "support/log_text.h"

namespace {

using testing::HasSubstr;

const SYSTEMTIME kNoon = {2024, 3, 0, 5, 12, 0, 0, 0};

// The first entry makes the whole file; a reader and the person who opens it rely on each byte.
TEST(ApplicationLog, MakesTheFileWithItsFiveSections) {
  LogPlace log;
  EXPECT_TRUE(log.Write(L" Restore ", "first"));
  EXPECT_TRUE(log.Write(L" Backup ", "second\r\nline\r\nthird"));
  EXPECT_TRUE(log.Write(L" Home ", "last\nof all"));
  EXPECT_EQ(log.place.Read("Norvane.log").substr(0, 2), "\xFF\xFE");
  EXPECT_EQ(log.Text(),
            "\r\n[ Backup ]\r\n2024/03/05 12:00:00:000=second line third\r\n"
            "[ Restore ]\r\n2024/03/05 12:00:00:000=first\r\n"
            "[ Restore from ]\r\n[ Copy/Move user data ]\r\n"
            "[ Home ]\r\n2024/03/05 12:00:00:000=last of all\r\n");
}

// A section that a reset has left out comes back at the end.
TEST(ApplicationLog, AddsAMissingSectionAtTheEnd) {
  LogPlace log;
  log.Write(L" Backup ", "old");
  EXPECT_TRUE(ResetLog(log.path.CStr()));
  EXPECT_EQ(log.Text(), "\r\n[ Backup ]\r\n[ Restore ]\r\n[ Restore from ]\r\n");
  EXPECT_TRUE(log.Write(L" Copy/Move user data ", "new"));
  EXPECT_TRUE(log.Write(L" Copy/Move user data ", "newer"));
  EXPECT_EQ(log.Text(),
            "\r\n[ Backup ]\r\n[ Restore ]\r\n[ Restore from ]\r\n"
            "[ Copy/Move user data ]\r\n2024/03/05 12:00:00:000=new\r\n2024/03/05 12:00:00:001=newer\r\n");
}

// Adds an entry to a file of these bytes. In the text that is expected, "+" stands for its line.
void ExpectEntryIn(const std::string& bytes, std::string expected) {
  SCOPED_TRACE(expected);
  LogPlace log;
  WriteBytes(log.path.CStr(), bytes);
  EXPECT_TRUE(log.Write(L" Backup ", "entry"));
  expected.replace(expected.find('+'), 1, "2024/03/05 12:00:00:000=entry\r\n");
  EXPECT_EQ(log.Text(), expected);
}

// What people and other programs have made of the file stays, line by line.
TEST(ApplicationLog, KeepsEveryOtherLine) {
  const std::string expected[] = {
      "; mine\r\n[ Backup ]\r\na=1\r\n; c\r\n+[ Restore ]\r\nb\r\n",
      "[ Backup ]\r\na\r\n\r\n+[ Home ]\r\n",       // an empty line before the next section
      "[backup] x\r\na\r\n+[ Home ]\r\n",           // section without blanks, other case
      "[ Backup ]\r\n+[ Home ]\r\n[ Backup ]\r\n",  // the first of two sections
      "[ Backup ]\r\n[ Restore\r\na\r\n+",          // a bracket that is no section
      "[ Backup ]\na\n+[ Home ]\n",
  };
  for (const std::string& text : expected) {
    std::string before = text;
    ExpectEntryIn(LogPlace::Utf16(before.erase(before.find('+'), 1)), text);
  }
  // What is missing is added.
  ExpectEntryIn(LogPlace::Utf16("[ Backup ]\r\na"), "[ Backup ]\r\na\r\n+");
  ExpectEntryIn(LogPlace::Utf16("[ Backup ]"), "[ Backup ]\r\n+");
  ExpectEntryIn(LogPlace::Utf16(""), "[ Backup ]\r\n+");
}

// A log that an editor has saved in its own way stays readable, and becomes UTF-16 again.
TEST(ApplicationLog, TakesLogsOfOtherEncodings) {
  const std::string text = "[ Backup ]\r\na=\xC3\xA9\r\n[ Home ]\r\n";
  const std::string utf16 = LogPlace::Utf16(text);
  std::string bigEndian = "\xFE\xFF";
  for (size_t i = 2; i < utf16.size(); i += 2) bigEndian += {utf16[i + 1], utf16[i]};
  for (const std::string& bytes : {"\xEF\xBB\xBF" + text, utf16.substr(2), bigEndian}) {
    ExpectEntryIn(bytes, "[ Backup ]\r\na=\xC3\xA9\r\n+[ Home ]\r\n");
  }
  ExpectEntryIn("[ Backup ]\r\na=1\r\n", "[ Backup ]\r\na=1\r\n+");
  ExpectEntryIn("", "[ Backup ]\r\n+");
  LogPlace odd;
  WriteBytes(odd.path.CStr(), LogPlace::Utf16("[ Backup ]\r\na\r\n") + "x");
  EXPECT_TRUE(odd.Write(L" Backup ", "entry"));
  EXPECT_THAT(odd.Text(), HasSubstr("[ Backup ]\r\na\r\n2024/03/05 12:00:00:000=entry\r\n"));
}

// Entries in front of much old text must each be there at once, in order, and nothing else may have
// changed once the writer is done.
TEST(ApplicationLog, WritesInFrontOfALongTail) {
  const std::string tail = LogPlace::Lines(500, "old entry of another screen");
  LogPlace log;
  log.Fill("[ Backup ]\r\nfirst\r\n[ Restore ]\r\n" + tail);
  std::string expected = "[ Backup ]\r\nfirst\r\n";
  for (int i = 0; i < 60; i++) {
    // Lengths of all kinds, so that what is left of the room is now and then too small for a line.
    std::string message = "entry " + std::string(static_cast<size_t>(i * 7 % 23), 'x') + std::to_string(i);
    EXPECT_TRUE(log.Write(L" Backup ", message));
    expected += LogPlace::Stamp(i) + "=" + message + "\r\n";
    EXPECT_EQ(log.TextWithoutBlankLines(), expected + "[ Restore ]\r\n" + tail) << i;
  }
  log.Close();
  EXPECT_EQ(log.Text(), expected + "[ Restore ]\r\n" + tail);
}

// What another program writes in between must neither be overwritten nor push an entry into a wrong
// section.
TEST(ApplicationLog, SeesWhatOthersWriteInBetween) {
  for (size_t tailLines : {0, 500}) {
    LogPlace log;
    log.Fill("[ Backup ]\r\n[ Restore ]\r\n" + LogPlace::Lines(tailLines, "old"));
    ApplicationLog other;
    for (int i = 0; i < 20; i++) {
      WString text = Wide("other" + std::to_string(i));
      EXPECT_TRUE(log.Write(L" Backup ", "own" + std::to_string(i)));
      EXPECT_TRUE(other.Write(log.path.CStr(), i % 3 == 0 ? L" Restore " : L" Backup ", text.CStr(), kNoon));
    }
    const std::string whole = log.TextWithoutBlankLines();
    const std::string backup = whole.substr(0, whole.find("[ Restore ]"));
    for (int i = 0; i < 20; i++) {
      EXPECT_THAT(backup, HasSubstr("=own" + std::to_string(i) + "\r\n"));
      EXPECT_THAT(i % 3 == 0 ? whole.substr(backup.size()) : backup,
                  HasSubstr("=other" + std::to_string(i) + "\r\n"));
    }
  }
}

// Two programs at once: each entry of both is there, each on a line of its own.
TEST(ApplicationLog, LosesNothingToASecondWriter) {
  for (size_t tailLines : {0, 500}) {
    LogPlace log;
    log.Fill("[ Backup ]\r\n[ Home ]\r\n" + LogPlace::Lines(tailLines, "old"));
    constexpr int kEntries = 60;
    std::vector<std::thread> writers;
    for (int writer = 0; writer < 3; writer++) {
      writers.emplace_back([&log, writer] {
        ApplicationLog own;
        for (int i = 0; i < kEntries; i++) {
          WString text = Wide("writer " + std::to_string(writer) + " entry " + std::to_string(i));
          EXPECT_TRUE(own.Write(log.path.CStr(), L" Backup ", text.CStr(), kNoon)) << GetLastError();
        }
      });
    }
    for (std::thread& writer : writers) writer.join();
    const std::string whole = log.TextWithoutBlankLines();
    EXPECT_EQ(LogPlace::Count(whole, "\r\n"), 2 + 3 * kEntries + tailLines);
    for (int i = 0; i < 3 * kEntries; i++) {
      EXPECT_EQ(LogPlace::Count(whole, LogPlace::Stamp(i) + "=writer"), 1u) << i;
    }
    EXPECT_THAT(log.place.List(), testing::ElementsAre("Norvane.log"));
  }
}

UniqueFile Open(const LogPlace& log, DWORD share) {
  return UniqueFile(CreateFileW(log.path.CStr(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr));
}

// A program that keeps the log must cost a run two seconds, and not two seconds for each failure. Someone
// who only looks at it must cost nothing.
TEST(ApplicationLog, WaitsOnceForAFileThatIsHeld) {
  LogPlace log;
  EXPECT_TRUE(log.Write(L" Backup ", "before"));
  UniqueFile holder = Open(log, FILE_SHARE_READ | FILE_SHARE_WRITE);
  EXPECT_TRUE(log.Write(L" Backup ", "looked at"));
  holder.Reset();
  holder = Open(log, 0);
  uint64_t start = GetTickCount64();
  EXPECT_FALSE(log.Write(L" Backup ", "lost"));
  uint64_t first = GetTickCount64() - start;
  for (int i = 0; i < 10; i++) EXPECT_FALSE(log.Write(L" Backup ", "lost"));
  uint64_t rest = GetTickCount64() - start - first;
  EXPECT_GE(first, 1900u);
  EXPECT_LT(first, 10000u);
  EXPECT_LT(rest, 1500u);
  holder.Reset();
  EXPECT_TRUE(log.Write(L" Backup ", "after"));
  EXPECT_THAT(log.Text(), HasSubstr("=looked at\r\n2024/03/05 12:00:00:002=after\r\n[ Restore ]"));
}

}  // namespace
