#include "folder_list.h"

#include "operations/backup_set.h"
#include "utf8_text.h"

bool ReadFolderList(const ConsoleArguments& arguments, uint32_t& mask, PlanProblem& problem) {
  WString unknown;
  if (ParseFolderList(FromUtf8Text(arguments.folders).CStr(), mask, &unknown)) return true;
  return Object(
      problem,
      "--folders: " + (unknown.IsEmpty() ? "the list is empty" : Quoted(unknown) + " is no folder") +
          "; give names from appdata, desktop, documents, downloads, music, pictures, videos, other, "
          "separated by commas, or all.",
      kExitUsage);
}

uint32_t SkippedAttributes(const ConsoleArguments& arguments) {
  return (arguments.copiesHidden ? 0u : kSkipHiddenFiles) | (arguments.copiesSystem ? 0u : kSkipSystemFiles);
}
