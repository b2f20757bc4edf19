// Runs one action of the module outside a tray and waits for its end.
#pragma once

#include "host/cli/exit_codes.h"
#include "host/cli/session.h"

namespace torvell {

// Starts the action of this index with `context` ("tray,position", from 0). Returns Good if it
// ended without a reported failure, RunFailed with the failures on standard error, Interrupted if
// Ctrl+C stopped it. CommandFailure if it can't start.
ExitCode RunAction(Session& session, const FoundInstrument& found, int32_t index,
                   const std::string& context);

}  // namespace torvell
