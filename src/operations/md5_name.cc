#include "operations/md5_name.h"

#include <windows.h>
// The header below needs windows.h before it.
#include <wincrypt.h>

#include "foundation/unique_handle.h"

namespace {

constexpr DWORD kRsaAesProvider = 0x18;
constexpr DWORD kMd5 = 0x8003;
constexpr DWORD kDigestSize = 16;

struct ProviderTraits {
  using Type = HCRYPTPROV;
  static Type Empty() { return 0; }
  static bool IsValid(Type value) { return value != 0; }
  static void Close(Type value) { CryptReleaseContext(value, 0); }
};
struct HashTraits {
  using Type = HCRYPTHASH;
  static Type Empty() { return 0; }
  static bool IsValid(Type value) { return value != 0; }
  static void Close(Type value) { CryptDestroyHash(value); }
};

// Windows XP knows the provider by its second name only.
bool OpenProvider(UniqueResource<ProviderTraits>& provider) {
  for (const wchar_t* name : {L"Microsoft Enhanced RSA and AES Cryptographic Provider",
                              L"Microsoft Enhanced RSA and AES Cryptographic Provider (Prototype)"}) {
    if (CryptAcquireContextW(provider.Receive(), nullptr, name, kRsaAesProvider, CRYPT_VERIFYCONTEXT)) {
      return true;
    }
  }
  return false;
}

bool Md5Digest(const void* data, DWORD size, BYTE (&digest)[kDigestSize]) {
  UniqueResource<ProviderTraits> provider;
  UniqueResource<HashTraits> hash;
  DWORD digestSize = kDigestSize;
  return OpenProvider(provider) && CryptCreateHash(provider.Get(), kMd5, 0, 0, hash.Receive()) &&
         CryptHashData(hash.Get(), static_cast<const BYTE*>(data), size, 0) &&
         CryptGetHashParam(hash.Get(), HP_HASHVAL, digest, &digestSize, 0) && digestSize == kDigestSize;
}

}  // namespace

bool Md5Name(const wchar_t* path, WString& name) {
  WString text(path);
  BYTE digest[kDigestSize];
  name.Assign(L"");
  DWORD bytes = (static_cast<DWORD>(text.Length()) + 1) * sizeof(wchar_t);
  if (!Md5Digest(text.CStr(), bytes, digest)) return false;
  wchar_t* digits = name.Reserve(2 * kDigestSize);
  for (BYTE byte : digest) {
    *digits++ = L"0123456789ABCDEF"[byte >> 4];
    *digits++ = L"0123456789ABCDEF"[byte & 15];
  }
  *digits = 0;
  name.length = 0;
  return true;
}
