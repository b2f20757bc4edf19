// Password hashes by Argon2id, which is slow and needs much memory on purpose. Any thread.
#pragma once

#include <string>

namespace torvell {

// Returns a new hash of the password with a random salt. Takes a noticeable part of a second and 64
// MB; HostError Database if there is too little memory.
std::string HashPassword(const std::string& password);

// Returns true if the hash belongs to this password. Takes as long as HashPassword in both cases.
bool FitsPassword(const std::string& hash, const std::string& password);

// Returns a hash that no password fits and that costs as much to check: for names that do not
// exist.
std::string NobodysHash();

// Returns true if FitsPassword takes as long for this hash as for a new one.
bool HasPresentCost(const std::string& hash);

}  // namespace torvell
