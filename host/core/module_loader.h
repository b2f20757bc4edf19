// The instrument module: loaded at run time, asked for instruments.
#pragma once

#include <optional>
#include <string>

#include "boundary/viscometer_instrument.h"
#include "host/core/host_error.h"

namespace torvell {

// Loads the module (platform::LoadLibrary; also looked for beside this library) and lets it search,
// on a thread of its own; returns when it is done. Found instruments are appended. Nothing, or what
// went wrong: OtherModule for one whose version of the boundary is not this program's, which is let
// go again before anything of it was called, else ModuleMissing. A module that was asked stays
// loaded.
std::optional<HostError> FindInstruments(const std::string& moduleName,
                                         rvx::ArrayOfInstruments& found);

}  // namespace torvell
