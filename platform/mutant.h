// Planted faults: by them the simulation proves that it finds faults. Only a build with RVX_MUTANTS
// has them; in every other build IsPlanted is a constant false, and nothing of them is left.
#pragma once

#include <string_view>

namespace platform {

#if defined(RVX_MUTANTS)
// The planted fault in force; empty: none. Set it before there are threads.
inline std::string_view plantedFault;

inline bool IsPlanted(std::string_view fault) {
  return !plantedFault.empty() && plantedFault == fault;
}

// Faults of one kind are told apart by a name behind a colon.
inline bool IsPlanted(std::string_view kind, std::string_view name) {
  return plantedFault.size() == kind.size() + 1 + name.size() && plantedFault.starts_with(kind) &&
         plantedFault[kind.size()] == ':' && plantedFault.ends_with(name);
}
#else
constexpr bool IsPlanted(std::string_view /*fault*/) { return false; }
constexpr bool IsPlanted(std::string_view /*kind*/, std::string_view /*name*/) { return false; }
#endif

}  // namespace platform
