#include "tests/simulation/mutant.h"

namespace rvx::soak {
std::span<const MutantEntry> AllMutants() { return {}; }
void SetMutant(const std::string&) {}
}  // namespace rvx::soak
