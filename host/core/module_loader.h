// The instrument module: loaded at run time, asked for instruments.
#pragma once

#include <string>

#include "boundary/viscometer_instrument.h"

namespace torvell {

// Loads the module (platform::LoadLibrary; also looked for beside this library) and lets it search,
// on a thread of its own; returns when it is done. Found instruments are appended. Empty, or what
// went wrong, for people. The module stays loaded.
std::string FindInstruments(const std::string& moduleName, rvx::ArrayOfInstruments& found);

}  // namespace torvell
