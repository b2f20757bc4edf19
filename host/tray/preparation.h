// Prepares a simulated instrument for a tray.
#pragma once

#include <functional>
#include <string>

#include "host/core/instrument_list.h"

namespace torvell {

// An instrument is polled every half second, so twelve missed answers are not a coincidence.
inline constexpr platform::Milliseconds kFirstStatusTimeout{6000};

// Waits for the instrument's first status. HostError Tray if none arrives in time.
void WaitForStatus(const InstrumentEntry& entry);

// Sets the home flag and chills the cell, as a person does before a tray. For a simulated
// instrument only: on a real one a person has to check the steppers. Blocks for minutes of the time
// base. `say` is called with a text for what is done; `isInterrupted` is called once a second.
// Returns false if `isInterrupted` returned true. HostError: Tray if the instrument refuses or the
// cell does not get cold, NotAllowed.
bool PrepareSimulated(const InstrumentEntry& entry, const std::function<bool()>& isInterrupted,
                      const std::function<void(const std::string&)>& say);

}  // namespace torvell
