// The version of the boundary between host and module.
#pragma once

#include <cstdint>

namespace rvx {

// Incremented whenever host and module of different builds would no longer understand each other;
// README.md beside this file lists the cases.
inline constexpr int32_t kBoundaryVersion = 2;

// The name under which a module exports its version: a constant and not a function, so that the
// host reads it before any code of the module is called. Constants of this type and name stay as
// they are for good, since a host must be able to read the version of a module of any age.
inline constexpr char kBoundaryVersionEntry[] = "RvxBoundaryVersion";

}  // namespace rvx

extern "C" {
extern const int32_t RvxBoundaryVersion;
}
