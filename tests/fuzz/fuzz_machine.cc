#include "fuzz_machine.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "machine/create_machine.h"
#include "machine/machine.h"

namespace {

std::string MakeMachine() {
  static std::string folder = (std::filesystem::temp_directory_path() / "norvane-fuzz.XXXXXX").string();
  std::string error;
  machine::MachinePlan plan;
  plan.accounts.emplace_back();
  plan.accounts.back().name = "Anna";
  machine::Machine made;
  Require(mkdtemp(folder.data()) != nullptr, "a temporary folder");
  const bool isMade =
      machine::CreateMachine(folder, plan, &error) && machine::Machine::Open(folder, made, &error);
  Require(isMade, error.c_str());
  std::filesystem::create_directory(folder + "/C/Test");
  machine::UseMachine(made);
  std::atexit([] {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  });
  return folder + "/C";
}

}  // namespace

const std::string& FuzzDrive() {
  static const std::string drive = MakeMachine();
  return drive;
}

void WriteOnDisk(const std::string& file, const uint8_t* data, size_t size) {
  std::ofstream stream(FuzzDrive() + "/" + file, std::ios::binary | std::ios::trunc);
  stream.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

std::string ReadFromDisk(const std::string& file) {
  std::ifstream stream(FuzzDrive() + "/" + file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void Require(bool isTrue, const char* what) {
  if (isTrue) return;
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}
