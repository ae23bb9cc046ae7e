// sam_hive.h
//
// A SAM hive as Windows writes it, made byte by byte for tests: what programs that reset passwords have
// documented of it.
#pragma once
#include <cstring>
#include <string>
#include <vector>

#include "machine/hive.h"
#include "machine/names.h"
#include "machine/sid_text.h"

struct SamUser {
  uint32_t rid;
  std::string name, fullName, comment, profile;
  uint16_t control = 0x0210;  // a normal account whose password doesn't expire
};

inline void PutWord(std::string& bytes, size_t at, uint32_t word) { memcpy(bytes.data() + at, &word, 4); }

inline std::string UserValue(const SamUser& user) {
  std::string v(0xCC, '\0');
  const auto put = [&](size_t row, const std::string& text) {
    const std::u16string units = machine::ToUtf16(text);
    PutWord(v, row, static_cast<uint32_t>(v.size() - 0xCC));
    PutWord(v, row + 4, static_cast<uint32_t>(units.size() * 2));
    v.append(reinterpret_cast<const char*>(units.data()), units.size() * 2);
    v.resize((v.size() + 3) & ~size_t{3});
  };
  put(0x0C, user.name);
  put(0x18, user.fullName);
  put(0x24, user.comment);
  put(0x6C, user.profile);
  return v;
}

inline std::string FixedValue(const SamUser& user) {
  std::string f(0x50, '\0');
  PutWord(f, 0x30, user.rid);
  PutWord(f, 0x38, user.control);
  return f;
}

inline std::string GroupValue(uint32_t rid, const std::vector<std::string>& members) {
  std::string c(0x34, '\0');
  const std::u16string name = u"Group";
  PutWord(c, 0, rid);
  PutWord(c, 0x10, 0);
  PutWord(c, 0x14, 10);
  c.append(reinterpret_cast<const char*>(name.data()), 10);
  c.resize(c.size() + 2);
  PutWord(c, 0x28, static_cast<uint32_t>(c.size() - 0x34));
  PutWord(c, 0x30, static_cast<uint32_t>(members.size()));
  for (const std::string& member : members) c += machine::SidBytes(member);
  PutWord(c, 0x2C, static_cast<uint32_t>(c.size()));
  return c;
}

inline machine::HivePlan SamHive(const std::string& machineSid, const std::vector<SamUser>& users,
                                 const std::vector<uint32_t>& administrators,
                                 const std::vector<uint32_t>& guests) {
  const auto sids = [&](const std::vector<uint32_t>& rids) {
    std::vector<std::string> result = {"S-1-5-18"};  // also a member whose SID has another length
    for (const uint32_t rid : rids) result.push_back(machineSid + "-" + std::to_string(rid));
    return result;
  };
  machine::HivePlan hive;
  machine::HivePlan& domains = hive.Key("SAM\\Domains");
  domains.Key("Account").Binary("V", std::string(40, 'x') + machine::SidBytes(machineSid));
  for (const SamUser& user : users) {
    char name[16];
    snprintf(name, sizeof name, "%08X", user.rid);
    machine::HivePlan& key = domains.Key(std::string("Account\\Users\\") + name);
    key.Binary("V", UserValue(user));
    key.Binary("F", FixedValue(user));
    domains.Key("Account\\Users\\Names\\" + user.name).Binary("", "", user.rid);
  }
  domains.Key("Builtin\\Aliases\\00000220").Binary("C", GroupValue(544, sids(administrators)));
  domains.Key("Builtin\\Aliases\\00000222").Binary("C", GroupValue(546, sids(guests)));
  return hive;
}
