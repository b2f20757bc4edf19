// Loads the instrument module at run time and asks it for instruments.
#pragma once

#include <optional>
#include <string>

#include "boundary/viscometer_instrument.h"
#include "host/core/host_error.h"

namespace torvell {

// Loads the module by platform::LoadLibrary, also from the folder of this library, and lets it
// search for instruments on a separate thread; returns when it is done and appends what was found.
// Returns nothing on success, else what went wrong: OtherModule if the module was built for another
// version of the boundary, else ModuleMissing. A module of another version is unloaded before
// anything in it is called. A module that was asked for instruments stays loaded.
std::optional<HostError> FindInstruments(const std::string& moduleName,
                                         rvx::ArrayOfInstruments& found);

}  // namespace torvell
