// registry_place.h
//
// A registry that a test may write to: a new machine's own with the usual hives on Linux, and what Wine has
// elsewhere.
#pragma once
#include <memory>

class RegistryPlace {
 public:
  RegistryPlace();
  ~RegistryPlace();
  RegistryPlace(const RegistryPlace&) = delete;
  RegistryPlace& operator=(const RegistryPlace&) = delete;

 private:
  struct Before;  // what was in use before
  std::unique_ptr<Before> before_;
};
