// norvanectl_main.cc
//
// The entry of norvanectl on a machine folder, which is given before all other arguments.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "machine/faults.h"
#include "machine/machine.h"

extern "C" int NorvaneConsoleMain(int count, const char* const* arguments);

namespace {

constexpr int kWrongUsage = 2, kNotStarted = 4;
constexpr const char* kOption = "--machine";

// What asks for no machine: a text about the program itself.
bool AsksForText(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    for (const char* text : {"--version", "--help", "-h"}) {
      if (strcmp(arguments[i], text) == 0) return true;
    }
  }
  return false;
}

// Takes the machine's folder out of the arguments. False if there is none.
bool TakeFolder(int count, char** arguments, std::string& folder, std::vector<const char*>& rest) {
  const size_t length = strlen(kOption);
  rest.assign(arguments, arguments + (count > 0 ? 1 : 0));
  int next = 1;
  if (count > 2 && strcmp(arguments[1], kOption) == 0) {
    folder = arguments[2];
    next = 3;
  } else if (count > 1 && strncmp(arguments[1], kOption, length) == 0 && arguments[1][length] == '=') {
    folder = arguments[1] + length + 1;
    next = 2;
  }
  rest.insert(rest.end(), arguments + (next < count ? next : count), arguments + count);
  return !folder.empty();
}

int Complain(int code, const std::string& text) {
  fprintf(stderr, "norvanectl: %s\n", text.c_str());
  return code;
}

}  // namespace

int main(int count, char** arguments) {
  std::string folder, error;
  std::vector<const char*> rest;
  const bool hasFolder = TakeFolder(count, arguments, folder, rest);
  if (AsksForText(count, arguments)) {
    const int code = NorvaneConsoleMain(static_cast<int>(rest.size()), rest.data());
    const bool isHelp = rest.size() < 2 || strcmp(rest[1], "--version") != 0;
    if (isHelp && code == 0) {
      printf(
          "\nOn this system the program works on a machine folder, which is given before all else:\n"
          "  norvanectl --machine DIR COMMAND ...\n");
    }
    return code;
  }
  if (!hasFolder) {
    return Complain(kWrongUsage,
                    "which machine is meant isn't given. Give its folder before all other arguments: "
                    "norvanectl --machine DIR ... (norvane-machine create DIR makes one).");
  }
  machine::Machine opened;
  if (!machine::Machine::Open(folder, opened, &error)) return Complain(kNotStarted, error);
  machine::UseMachine(std::move(opened));
  const std::string faults = machine::ThisMachine().folder + "/faults.ini";
  if (access(faults.c_str(), F_OK) == 0 && !machine::LoadFaults(faults, &error)) {
    return Complain(kNotStarted, error);
  }
  const int code = NorvaneConsoleMain(static_cast<int>(rest.size()), rest.data());
  fflush(stdout);
  machine::LeaveMachine();
  return code;
}
