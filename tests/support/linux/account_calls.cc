#include "support/account_calls.h"

#include <set>
#include <string_view>

#include "machine/faults.h"

WatchedAccountCalls::WatchedAccountCalls() {
  machine::FaultPlan plan;
  plan.before = [this](std::string_view call, std::string_view path) {
    static const std::set<std::string_view> kCalls = {
        "NetUserAdd",    "NetUserSetInfo", "NetLocalGroupAddMembers", "NetLocalGroupDelMembers",
        "CreateProfile", "LogonUserW",     "LoadUserProfileW"};
    if (kCalls.contains(call)) made.push_back(std::string(call).append(" ").append(path));
  };
  machine::SetFaults(plan);
}

WatchedAccountCalls::~WatchedAccountCalls() { machine::ClearFaults(); }

FailingAccountCall::FailingAccountCall(const std::string& call, uint32_t nth) {
  machine::FaultPlan plan;
  const size_t blank = call.find(' ');
  plan.call = call.substr(0, blank);
  if (blank != std::string::npos) plan.path = call.substr(blank + 1);
  plan.nth = nth;
  plan.andAllLater = true;
  plan.error = 5;
  machine::SetFaults(plan);
}

FailingAccountCall::~FailingAccountCall() { machine::ClearFaults(); }
