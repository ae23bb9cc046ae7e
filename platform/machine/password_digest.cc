#include "machine/password_digest.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

namespace machine {
namespace {

constexpr std::string_view kKind = "pbkdf2-sha256:";
constexpr int kRounds = 10000;
constexpr size_t kSaltSize = 16, kKeySize = 32;

std::string Hex(const unsigned char* bytes, size_t size) {
  std::string text;
  for (size_t i = 0; i < size; ++i) {
    text += "0123456789abcdef"[bytes[i] >> 4];
    text += "0123456789abcdef"[bytes[i] & 15];
  }
  return text;
}

// The salt goes in as it is written, so that nothing has to be read back.
std::string Digest(std::string_view salt, std::u16string_view password) {
  unsigned char key[kKeySize];
  if (PKCS5_PBKDF2_HMAC(reinterpret_cast<const char*>(password.data()), static_cast<int>(password.size() * 2),
                        reinterpret_cast<const unsigned char*>(salt.data()), static_cast<int>(salt.size()),
                        kRounds, EVP_sha256(), kKeySize, key) != 1) {
    return {};
  }
  return std::string(kKind).append(salt).append(":") + Hex(key, kKeySize);
}

}  // namespace

std::string PasswordDigest(std::u16string_view password) {
  unsigned char salt[kSaltSize];
  if (password.empty() || RAND_bytes(salt, kSaltSize) != 1) return {};
  return Digest(Hex(salt, kSaltSize), password);
}

bool MatchesDigest(const std::string& digest, std::u16string_view password) {
  if (digest.empty() || password.empty()) return digest.empty() && password.empty();
  const size_t end = digest.find(':', kKind.size());
  if (!digest.starts_with(kKind) || end == std::string::npos) return false;
  const std::string own = Digest(digest.substr(kKind.size(), end - kKind.size()), password);
  return own.size() == digest.size() && CRYPTO_memcmp(own.data(), digest.data(), own.size()) == 0;
}

}  // namespace machine
