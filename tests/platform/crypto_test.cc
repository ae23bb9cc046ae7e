#include <gtest/gtest.h>
#include <windows.h>
#include <rpcdce.h>
#include <wincrypt.h>

#include <set>
#include <string>

#include "support/test_place.h"

namespace {

constexpr wchar_t kProvider[] = L"Microsoft Enhanced RSA and AES Cryptographic Provider";

std::string Md5(const std::string& first, const std::string& second) {
  HCRYPTPROV provider = 0;
  HCRYPTHASH hash = 0;
  BYTE digest[16] = {};
  DWORD size = sizeof(digest);
  EXPECT_TRUE(CryptAcquireContextW(&provider, nullptr, kProvider, PROV_RSA_AES, CRYPT_VERIFYCONTEXT));
  EXPECT_TRUE(CryptCreateHash(provider, CALG_MD5, 0, 0, &hash));
  for (const std::string& part : {first, second}) {
    EXPECT_TRUE(
        CryptHashData(hash, reinterpret_cast<const BYTE*>(part.data()), static_cast<DWORD>(part.size()), 0));
  }
  EXPECT_TRUE(CryptGetHashParam(hash, HP_HASHVAL, digest, &size, 0));
  EXPECT_EQ(size, 16u);
  EXPECT_FALSE(CryptHashData(hash, digest, 1, 0));  // a digest that was taken is final
  EXPECT_TRUE(CryptDestroyHash(hash));
  EXPECT_TRUE(CryptReleaseContext(provider, 0));
  EXPECT_FALSE(CryptReleaseContext(provider, 0));
  std::string text;
  for (BYTE byte : digest) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

}  // namespace

// Folders of a set would get names that another machine doesn't find. Digests as RFC 1321 has them.
TEST(Crypto, Md5) {
  EXPECT_EQ(Md5("", ""), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(Md5("message ", "digest"), "f96b697d7cb7938d525a2f31aaf161d0");
}

TEST(Crypto, UnknownProvidersFail) {
  HCRYPTPROV provider = 0;
  EXPECT_FALSE(CryptAcquireContextW(&provider, nullptr, L"Another", PROV_RSA_AES, CRYPT_VERIFYCONTEXT));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(NTE_KEYSET_NOT_DEF));
  EXPECT_FALSE(CryptAcquireContextW(&provider, nullptr, kProvider, 99, CRYPT_VERIFYCONTEXT));
  HCRYPTHASH hash = 0;
  EXPECT_FALSE(CryptCreateHash(1, CALG_MD5, 0, 0, &hash));
}

// Names made from them would collide, or the fields stand in the wrong order.
TEST(Uuid, TextsAreOfTheRandomKindAndNeverTheSame) {
  std::set<std::string> texts;
  for (int i = 0; i < 100; ++i) {
    UUID uuid;
    RPC_WSTR text = nullptr;
    ASSERT_EQ(UuidCreate(&uuid), RPC_S_OK);
    ASSERT_EQ(UuidToStringW(&uuid, &text), RPC_S_OK);
    std::string utf8 = Utf8(reinterpret_cast<const wchar_t*>(text));
    EXPECT_EQ(RpcStringFreeW(&text), RPC_S_OK);
    EXPECT_EQ(text, nullptr);
    ASSERT_EQ(utf8.size(), 36u);
    EXPECT_EQ(utf8[14], '4');
    EXPECT_NE(std::string("89ab").find(utf8[19]), std::string::npos);
    texts.insert(utf8);
  }
  EXPECT_EQ(texts.size(), 100u);

  UUID known = {0x01234567, 0x89ab, 0xcdef, {0, 1, 2, 3, 4, 5, 6, 255}};
  RPC_WSTR text = nullptr;
  ASSERT_EQ(UuidToStringW(&known, &text), RPC_S_OK);
  EXPECT_EQ(Utf8(reinterpret_cast<const wchar_t*>(text)), "01234567-89ab-cdef-0001-0203040506ff");
  RpcStringFreeW(&text);
}
