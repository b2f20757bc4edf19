// The stored calibration standards.
#pragma once

#include <vector>

#include "host/cli/session.h"
#include "host/cli/standards_file.h"

namespace torvell {

// Returns the stored standards; opens the host if it is not open. CommandFailure (data failure) if
// they can't be read.
std::vector<StandardRow> ReadStandards(Session& session);

}  // namespace torvell
