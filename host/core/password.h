// Password hashes: Argon2id, made slow and hungry for memory on purpose.
#pragma once

#include <string>

namespace torvell {

// A new hash of the password, with a salt of its own. HostError if there is too little memory (64
// MB for the moment of the call). Takes a noticeable part of a second.
std::string HashPassword(const std::string& password);

// True if the hash is one of this password. Takes as long as HashPassword whether it is or not.
bool FitsPassword(const std::string& hash, const std::string& password);

// A hash that no password fits, of the same cost: for names that do not exist.
std::string NobodysHash();

// True if FitsPassword costs for this hash what it costs for a new one.
bool HasPresentCost(const std::string& hash);

}  // namespace torvell
