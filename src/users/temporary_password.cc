#include "users/temporary_password.h"

// The header below needs windows.h before it.
#include <wincrypt.h>

#include "foundation/unique_handle.h"

namespace {

struct ProviderTraits {
  using Type = HCRYPTPROV;
  static Type Empty() { return 0; }
  static bool IsValid(Type value) { return value != 0; }
  static void Close(Type value) { CryptReleaseContext(value, 0); }
};

// In turn, so that each kind is there; none that looks like another, and only signs that every keyboard
// and every policy knows.
struct Units {
  const wchar_t* list;
  BYTE count;
};
constexpr Units kKinds[] = {{L"ABCDEFGHJKLMNPQRSTUVWXYZ", 24},
                            {L"abcdefghijkmnopqrstuvwxyz", 25},
                            {L"23456789", 8},
                            {L"!#$%+-=_", 8}};

}  // namespace

TemporaryPassword::TemporaryPassword() {
  BYTE random[kLength];
  UniqueResource<ProviderTraits> provider;
  if (CryptAcquireContextW(provider.Receive(), nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT) &&
      CryptGenRandom(provider.Get(), kLength, random)) {
    for (DWORD i = 0; i < kLength; i++) {
      const Units& kind = kKinds[i % 4];
      text_[i] = kind.list[random[i] % kind.count];
    }
  }
  SecureZeroMemory(random, sizeof(random));
}

TemporaryPassword::~TemporaryPassword() { SecureZeroMemory(text_, sizeof(text_)); }
