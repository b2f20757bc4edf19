// Whether the module simulates its instruments.
#pragma once

#include <cstdint>

namespace rvx {

// The value "Simulate" of the key store, read afresh at every call; 0 if it can't be read.
int32_t IsSimulated();

}  // namespace rvx
