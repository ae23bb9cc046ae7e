#include "set_document.h"

#include "given_path.h"
#include "operations/info_file.h"
#include "utf8_text.h"

bool OpenSet(const std::string& set, IniDocument& document, PlanProblem& problem) {
  const WString path = GivenPath(set);
  WString infoFile = FindInfoFile(path.CStr());
  if (infoFile.IsEmpty()) infoFile = ChooseInfoFile(path.CStr());
  const InfoFileState state = CheckInfoFile(infoFile.CStr());
  if (state != InfoFileState::kReadable) {
    return Object(problem, Escaped(InfoFileSentence(state, infoFile.CStr())));
  }
  document.Load(infoFile.CStr(), false);  // an empty file gives false and is a set that holds nothing
  return true;
}
