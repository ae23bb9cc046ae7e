// current_token.h
//
// As whom the calling thread acts for the time being.
#pragma once
#include <memory>

#include "machine/token.h"

namespace machine {

// From now on the calling thread acts as `token`; null: as the process again.
void Impersonate(std::shared_ptr<Token> token);

}  // namespace machine
