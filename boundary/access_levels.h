// The levels of rights, which host and module share: SecurityManager::GetAccessLevel returns one of
// them.
#pragma once

#include <cstdint>

namespace rvx {

inline constexpr int32_t kLevelNobody = 0;     // may read
inline constexpr int32_t kLevelOperator = 10;  // runs trays, gives service commands
inline constexpr int32_t kLevelManager = 50;   // changes settings
inline constexpr int32_t kLevelService = 100;  // administers users, sets up the instrument
// Required for what only the instrument or the program itself writes; no user has it.
inline constexpr int32_t kLevelUnreachable = 1000;

}  // namespace rvx
