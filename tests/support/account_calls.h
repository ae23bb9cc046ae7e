// account_calls.h
//
// The calls of the system that make and change accounts, watched or made to fail, in both builds. A call
// is told as its name and what it was about: "NetUserAdd Eve", "NetUserSetInfo Eve,1011" (the level),
// "NetLocalGroupAddMembers Users", "CreateProfile Eve", "LogonUserW Eve", "LoadUserProfileW Eve". Calls that
// the system refuses don't show.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

class WatchedAccountCalls {
 public:
  WatchedAccountCalls();
  ~WatchedAccountCalls();
  WatchedAccountCalls(const WatchedAccountCalls&) = delete;
  WatchedAccountCalls& operator=(const WatchedAccountCalls&) = delete;

  std::vector<std::string> made;
};

// While it lives, the call fails with "access denied": each time, or the `nth` time and later on.
class FailingAccountCall {
 public:
  explicit FailingAccountCall(const std::string& call, uint32_t nth = 1);
  ~FailingAccountCall();
  FailingAccountCall(const FailingAccountCall&) = delete;
  FailingAccountCall& operator=(const FailingAccountCall&) = delete;
};
