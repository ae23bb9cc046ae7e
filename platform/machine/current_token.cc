#include "machine/current_token.h"

#include <mutex>

#include "machine/accounts_file.h"
#include "machine/machine.h"
#include "machine/sessions.h"

namespace machine {
namespace {

std::mutex lock;
std::shared_ptr<Token>& OfProcess() {
  static auto* token = new std::shared_ptr<Token>;
  return *token;
}
thread_local std::shared_ptr<Token> ofThread;

void DropToken() {
  const std::lock_guard hold(lock);
  OfProcess() = nullptr;
  ofThread = nullptr;
}

}  // namespace

std::shared_ptr<Token> ProcessToken() {
  const std::lock_guard hold(lock);
  std::shared_ptr<Token>& token = OfProcess();
  if (!token) {
    static const bool asked = (OnLeaveMachine(DropToken), true);
    static_cast<void>(asked);
    const AccountsHold accounts;
    const Account* account = ThisMachine().RunningAccount();
    token = MakeToken(account ? account->name : "SYSTEM", OwnSession());
  }
  return token;
}

std::shared_ptr<Token> ThreadToken() { return ofThread ? ofThread : ProcessToken(); }

void Impersonate(std::shared_ptr<Token> token) { ofThread = std::move(token); }

AsSystem::AsSystem() : before_(std::move(ofThread)) { ofThread = MakeToken("SYSTEM", OwnSession()); }

AsSystem::~AsSystem() { ofThread = std::move(before_); }

}  // namespace machine
