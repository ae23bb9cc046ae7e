// account_stand_in.h
//
// Functions that stand in front of the system's in the tests under Wine, which has one account and
// reads no user hive: an account database and the making of accounts, the console session's user, and the
// loading of hives. They are linked into a test program by being there. Until a test sets accounts, what asks
// or loads is handed on to the system; what makes accounts never reaches it.
#pragma once
#include <windows.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace stand_in {

struct Account {
  std::string name;  // all texts are UTF-8
  std::string sid;   // text form; empty: the name can't be looked up
  std::string fullName = {};
  std::string profile = {};  // of the account database
  uint32_t privilege = 1;
  std::string password = {};
  bool hasMadeProfile = false;  // by a call here
  std::vector<std::string> groups = {};
};

// What the calls answer.
struct Accounts {
  bool isActive = false;
  std::vector<Account> list;
  std::vector<Account> ofDomain;  // known by their names alone, as to a machine that belongs to a domain
  std::string consoleUser;        // whose session is at the console; empty: nobody's
  DWORD enumerationResult = 0;    // of NetUserEnum; ERROR_MORE_DATA gives the accounts again and again
  uint32_t enumerationTotal = 0;  // what NetUserEnum gives as the total; 0: as many as there are
  uint32_t enumerations = 0;      // calls of NetUserEnum

  bool hasCreateProfile = true;  // whether Userenv.dll has that function
  // Makes the profile of a new account, in whatever way it is asked for.
  std::function<void(const std::string& name, const std::string& sid)> makeProfile;
  // Gets the calls that make accounts, as support/account_calls.h tells them; null: nobody watches.
  std::vector<std::string>* watcher = nullptr;
  std::string failing;       // the call that fails, in the same form or its name alone; empty: none
  uint32_t failingFrom = 1;  // the first of those calls that fails; all later ones do, too
};
Accounts& TheAccounts();
Account* FindAccount(const wchar_t* name);  // null if there is none

// A hive here is a text file: a line for each value, with key, name, type and text separated by tabs,
// in UTF-8; a REG_DWORD's text is its number. RegLoadKeyW puts them under the root that it is given.
struct HiveText {
  std::string key, name, text;
  uint32_t type = REG_SZ;
};
std::string HiveFileText(const std::vector<HiveText>& values);

// As the system does at a logon: not through RegLoadKeyW, and not to be unloaded by RegUnLoadKeyW.
LSTATUS LoadAsSystem(const wchar_t* name, const wchar_t* file);
void UnloadAllHives();

// The system's function of this name; null if there is none.
template <typename Function>
Function System(const wchar_t* library, const char* name) {
  FARPROC address = GetProcAddress(LoadLibraryW(library), name);
  return reinterpret_cast<Function>(reinterpret_cast<void*>(address));
}

}  // namespace stand_in

// Puts `function` in the place of an imported one, for the calls of all objects of the program.
// `symbol` is the name with its number of argument bytes, as the linker knows it.
#define STAND_IN_FOR(symbol, function)                                 \
  extern "C" {                                                         \
  extern void* const stand_in_##function asm("__imp__" symbol);        \
  void* const stand_in_##function = reinterpret_cast<void*>(function); \
  }
