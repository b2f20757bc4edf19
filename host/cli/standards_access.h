// The stored calibration standards.
#pragma once

#include <vector>

#include "host/cli/session.h"
#include "host/cli/standards_file.h"

namespace torvell {

// Opens the host if it is not. CommandFailure (data failure) if they can't be read.
std::vector<StandardRow> ReadStandards(Session& session);

}  // namespace torvell
