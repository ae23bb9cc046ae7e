#include "support/copy_run.h"

#include <gtest/gtest.h>

#include <sstream>

#include "foundation/unique_handle.h"
#include "operations/copy_engine.h"

namespace {

int64_t AsNumber(const FILETIME& time) {
  return static_cast<int64_t>(static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
}

FILETIME AsFileTime(int64_t time) { return {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)}; }

CopyRun& RunOf(void* owner) { return *static_cast<CopyRun*>(owner); }

}  // namespace

std::unique_ptr<OperationContext> NewContext(AppObject& app, const OperationObserver* observer) {
  auto context = std::make_unique<OperationContext>();
  context->app = &app;
  context->observer = observer;
  context->copyBuffer = new uint8_t[kCopyBufferSize];
  context->copyBufferSize = kCopyBufferSize;
  return context;
}

CopyRun::CopyRun() {
  app.logPath = place / "log.txt";
  app.logSection = kLogBackup;
  observer_.owner = this;
  observer_.phaseBegins = [](void* owner, const wchar_t* source, const wchar_t* target) {
    RunOf(owner).told.push_back(RunOf(owner).place.Shown("phase " + Utf8(source) + " > " + Utf8(target)));
  };
  observer_.copyingBegins = [](void* owner, int64_t items, int64_t bytes) {
    RunOf(owner).told.push_back(std::to_string(items) + " items, " + std::to_string(bytes) + " bytes");
  };
  observer_.itemFailed = [](void* owner, const wchar_t* text, uint32_t error) {
    RunOf(owner).told.push_back("failed " + RunOf(owner).place.Shown(Utf8(text)));
    RunOf(owner).reasons.push_back(error);
  };
  observer_.ended = [](void* owner, OperationOutcome) { RunOf(owner).told.push_back("ended"); };
  NewRecord();
}

OperationContext& CopyRun::NewRecord() {
  context = NewContext(app, &observer_);
  return *context;
}

bool CopyRun::Run(bool fast) {
  return RunCopyPhase((place / "source").CStr(), (place / "target").CStr(), *context, fast);
}

std::vector<std::string> CopyRun::Log() const {
  std::vector<std::string> messages;
  if (!place.Exists("log.txt")) return messages;
  FileObject file(app.logPath.CStr(), 0);
  WString text;
  file.ReadAllText(text);
  std::istringstream lines(Utf8(text));
  for (std::string line; std::getline(lines, line);) {
    if (line.size() > 24 && line[23] == '=')
      messages.push_back(place.Shown(line.substr(24, line.size() - 25)));
  }
  return messages;
}

void UseSmallBlocks(OperationContext& context) { context.copyBufferSize = 4; }

FileFacts Facts(const WString& path) {
  WString whole(path);
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  EXPECT_TRUE(GetFileAttributesExW(whole.AddLongPathPrefix().CStr(), GetFileExInfoStandard, &data))
      << Utf8(path);
  return {ReadBytes(path.CStr()), data.dwFileAttributes, AsNumber(data.ftCreationTime),
          AsNumber(data.ftLastWriteTime)};
}

void SetTimes(const wchar_t* path, int64_t created, int64_t written) {
  WString whole(path);
  UniqueFile file(CreateFileW(whole.AddLongPathPrefix().CStr(), FILE_WRITE_ATTRIBUTES, 7, nullptr,
                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  const FILETIME first = AsFileTime(created), last = AsFileTime(written);
  EXPECT_TRUE(file && SetFileTime(file.Get(), created ? &first : nullptr, nullptr, &last)) << Utf8(path);
}
