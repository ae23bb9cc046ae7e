// crypto.cc
//
// MD5 and random numbers of CryptoAPI, through libcrypto.
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <windows.h>
#include <wincrypt.h>

#include <algorithm>
#include <memory>
#include <string_view>

#include "machine/call.h"
#include "machine/handles.h"

using namespace machine;

namespace {

struct Provider : Object {};

struct Hash : Object {
  EVP_MD_CTX* context = EVP_MD_CTX_new();
  unsigned char digest[EVP_MAX_MD_SIZE] = {};
  unsigned size = 0;  // of the digest; 0 while data may still be added
  ~Hash() override { EVP_MD_CTX_free(context); }
};

HANDLE AsHandle(ULONG_PTR value) { return reinterpret_cast<HANDLE>(value); }

bool IsKnownProvider(const wchar_t* name) {
  std::u16string_view text = reinterpret_cast<const char16_t*>(name);
  return text == u"Microsoft Enhanced RSA and AES Cryptographic Provider" ||
         text == u"Microsoft Enhanced RSA and AES Cryptographic Provider (Prototype)";
}

BOOL FailWithStatus(HRESULT status) { return Fail(static_cast<DWORD>(status)); }

// The object behind a handle of the kind, or null and the last error that this library has for it.
template <typename T>
std::shared_ptr<T> CryptoObject(ULONG_PTR handle) {
  auto object = std::dynamic_pointer_cast<T>(FindHandle(AsHandle(handle)));
  if (!object) SetLastError(ERROR_INVALID_HANDLE);
  return object;
}

}  // namespace

BOOL WINAPI CryptAcquireContextW(HCRYPTPROV* provider, const wchar_t* container, const wchar_t* name,
                                 DWORD type, DWORD flags) {
  EnterCall();
  if (container || (flags & ~static_cast<DWORD>(CRYPT_SILENT)) != CRYPT_VERIFYCONTEXT) {
    Unsupported("CryptAcquireContextW", "key containers");
  }
  if (type != PROV_RSA_AES) return FailWithStatus(NTE_PROV_TYPE_NOT_DEF);
  if (name && !IsKnownProvider(name)) return FailWithStatus(NTE_KEYSET_NOT_DEF);
  *provider = reinterpret_cast<HCRYPTPROV>(AddHandle(std::make_shared<Provider>()));
  return TRUE;
}

BOOL WINAPI CryptReleaseContext(HCRYPTPROV provider, DWORD) {
  EnterCall();
  return CryptoObject<Provider>(provider) && RemoveHandle(AsHandle(provider));
}

BOOL WINAPI CryptGenRandom(HCRYPTPROV provider, DWORD size, BYTE* bytes) {
  EnterCall();
  if (!CryptoObject<Provider>(provider)) return FALSE;
  return RAND_bytes(bytes, static_cast<int>(size)) == 1 ? TRUE : FailWithStatus(NTE_FAIL);
}

BOOL WINAPI CryptCreateHash(HCRYPTPROV provider, ALG_ID algorithm, HCRYPTKEY key, DWORD, HCRYPTHASH* hash) {
  EnterCall();
  if (!CryptoObject<Provider>(provider)) return FALSE;
  if (algorithm != CALG_MD5 || key != 0) Unsupported("CryptCreateHash", "anything but MD5");
  auto made = std::make_shared<Hash>();
  if (!made->context || EVP_DigestInit_ex(made->context, EVP_md5(), nullptr) != 1) {
    return FailWithStatus(NTE_FAIL);
  }
  *hash = reinterpret_cast<HCRYPTHASH>(AddHandle(std::move(made)));
  return TRUE;
}

BOOL WINAPI CryptHashData(HCRYPTHASH handle, const BYTE* data, DWORD size, DWORD) {
  EnterCall();
  auto hash = CryptoObject<Hash>(handle);
  if (!hash) return FALSE;
  if (hash->size != 0) return FailWithStatus(NTE_BAD_HASH_STATE);
  return EVP_DigestUpdate(hash->context, data, size) == 1 ? TRUE : FailWithStatus(NTE_FAIL);
}

BOOL WINAPI CryptGetHashParam(HCRYPTHASH handle, DWORD parameter, BYTE* data, DWORD* size, DWORD) {
  EnterCall();
  auto hash = CryptoObject<Hash>(handle);
  if (!hash) return FALSE;
  if (parameter != HP_HASHVAL || !data) Unsupported("CryptGetHashParam", "anything but the digest");
  if (hash->size == 0 && EVP_DigestFinal_ex(hash->context, hash->digest, &hash->size) != 1) {
    return FailWithStatus(NTE_FAIL);
  }
  bool fits = *size >= hash->size;
  *size = hash->size;
  if (!fits) return Fail(ERROR_MORE_DATA);
  std::copy_n(hash->digest, hash->size, data);
  return TRUE;
}

BOOL WINAPI CryptDestroyHash(HCRYPTHASH hash) {
  EnterCall();
  return CryptoObject<Hash>(hash) && RemoveHandle(AsHandle(hash));
}
