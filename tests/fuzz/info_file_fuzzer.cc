// An info file comes from a stranger's disk. Whatever is in it, it is read within bounds, and what was
// read once and written reads the same again.
#include "foundation/ini_document.h"
#include "fuzz_machine.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  WriteOnDisk("Test/BackupInfo.nvsav", data, size);
  IniDocument document;
  document.Load(L"C:\\Test\\BackupInfo.nvsav", false);
  for (const wchar_t* section : {L"Users", L"BackupUsers", L"Info"}) {
    uint32_t first = 0, end = 0;
    document.FindSection(section, first, end);
    if (first == 0) continue;
    WString key, value;
    for (uint32_t line = document.NextKeyLine(first, end); line != 0;
         line = document.NextKeyLine(line, end)) {
      document.ParseKeyLine(line, key, value);
    }
  }
  document.SetValue(L"Users", L"1", L"Anna");
  Require(WString(document.GetValue(L"Users", L"1")) == L"Anna", "a value that was set is found");
  document.Save();

  IniDocument again;
  again.Load(L"C:\\Test\\BackupInfo.nvsav", false);
  Require(WString(again.BuildText()) == document.BuildText(), "the saved document reads the same");
  again.RemoveSection(L"Users");
  again.DeleteKey(L"BackupUsers", L"1");
  return 0;
}
