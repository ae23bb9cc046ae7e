#include "support/account_calls.h"

#include "stand_in/account_stand_in.h"

WatchedAccountCalls::WatchedAccountCalls() { stand_in::TheAccounts().watcher = &made; }

WatchedAccountCalls::~WatchedAccountCalls() { stand_in::TheAccounts().watcher = nullptr; }

FailingAccountCall::FailingAccountCall(const std::string& call, uint32_t nth) {
  stand_in::TheAccounts().failing = call;
  stand_in::TheAccounts().failingFrom = nth;
}

FailingAccountCall::~FailingAccountCall() { stand_in::TheAccounts().failing.clear(); }
