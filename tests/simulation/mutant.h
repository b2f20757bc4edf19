// The table of planted faults: what each of them does to the program.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace rvx::soak {

struct MutantEntry {
  std::string_view name;
  std::string_view what;  // the fault that it plants
};

// Under the thread sanitizer those that only it finds. Empty in a program that was built without
// them.
std::span<const MutantEntry> AllMutants();

// Puts a planted fault into force in this process; the empty name none.
void SetMutant(const std::string& name);

}  // namespace rvx::soak
