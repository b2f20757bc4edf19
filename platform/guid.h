// 16-byte identifiers.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace platform {

using Guid = std::array<uint8_t, 16>;

// A new identifier (version 4). From the system's randomness, or from the seed if one is set.
// Any thread may call it.
Guid CreateGuid();

// From now on identifiers come from `seed` and `stream`, so that a run repeats them; another stream
// gives others. Call it before threads start.
void SeedGuids(uint64_t seed, uint64_t stream);

// "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx" in lower case.
std::string FormatGuid(const Guid& guid);

}  // namespace platform
