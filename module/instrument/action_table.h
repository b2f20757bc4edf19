// The table of the actions that an instrument can make. The floors above fill it, so that the
// instrument knows no action class.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "boundary/action.h"
#include "boundary/action_keys.h"

namespace rvx {

class C_RVX;

struct ActionTableEntry {
  std::string classKey;  // "RVX Measure Viscosity Action"
  std::unique_ptr<Action> (*make)(C_RVX& instrument);
};

// Eighteen entries in the order of ActionIndex.
using ActionTable = std::vector<ActionTableEntry>;

}  // namespace rvx
