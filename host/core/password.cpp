#include "host/core/password.h"

#include <sodium.h>

#include <array>

#include "host/core/host_error.h"

namespace torvell {
namespace {

constexpr auto kWork = crypto_pwhash_OPSLIMIT_INTERACTIVE;
constexpr auto kMemory = crypto_pwhash_MEMLIMIT_INTERACTIVE;

}  // namespace

std::string HashPassword(const std::string& password) {
  std::array<char, crypto_pwhash_STRBYTES> hash{};
  if (sodium_init() < 0 ||
      crypto_pwhash_str(hash.data(), password.data(), password.size(), kWork, kMemory) != 0) {
    throw HostError(HostErrorKind::Database,
                    "The password could not be made safe for storing: there is too little memory "
                    "(64 MB are needed). Nothing was changed. Close other programs and try again.");
  }
  return hash.data();
}

bool FitsPassword(const std::string& hash, const std::string& password) {
  return sodium_init() >= 0 &&
         crypto_pwhash_str_verify(hash.c_str(), password.data(), password.size()) == 0;
}

std::string NobodysHash() {
  // The digest after the last "$" is made up, so no password is known for it.
  return "$argon2id$v=19$m=65536,t=2,p=1$c29tZXNhbHRzb21lc2FsdA$"
         "CTFhFdXPJO1aFaMaO6Mm5c8y7cJHAPz8ArZWb2GRPPc";
}

bool HasPresentCost(const std::string& hash) {
  return crypto_pwhash_str_needs_rehash(hash.c_str(), kWork, kMemory) == 0;
}

}  // namespace torvell
