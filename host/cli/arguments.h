// Checks of what is typed as an argument, with messages that say what was found and what is
// accepted.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>
#include <map>
#include <string>

namespace torvell {

inline constexpr int64_t kNoLimit = std::numeric_limits<int64_t>::max();

// A whole number from `least` to `most`.
CLI::Validator WholeNumber(int64_t least, int64_t most = kNoLimit);

// A finite number with a point as decimal sign.
CLI::Validator DecimalNumber();

// One of the names, in any letter case; the argument takes the number that goes with it.
CLI::Validator OneOf(const std::map<std::string, int>& choices);

}  // namespace torvell
