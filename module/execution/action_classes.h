// The eighteen actions of an instrument.
#pragma once

#include "module/instrument/action_table.h"

namespace rvx {

// In the order of ActionIndex; lives as long as the process.
const ActionTable& GetActionTable();

}  // namespace rvx
