// current_token.h
//
// As whom the calling thread acts for the time being.
#pragma once
#include <memory>

#include "machine/token.h"

namespace machine {

// From now on the calling thread acts as `token`; null: as the process again.
void Impersonate(std::shared_ptr<Token> token);

// While this lives, the calling thread acts as the system itself, which does some things in the name of
// its callers.
class AsSystem {
 public:
  AsSystem();
  ~AsSystem();
  AsSystem(const AsSystem&) = delete;
  AsSystem& operator=(const AsSystem&) = delete;

 private:
  std::shared_ptr<Token> before_;
};

}  // namespace machine
