// Making a simulated instrument ready for a tray.
#pragma once

#include <functional>
#include <string>

#include "host/core/instrument_list.h"

namespace torvell {

// A real instrument answers a poll every half second; twelve missed ones are no accident.
inline constexpr platform::Milliseconds kFirstStatusTimeout{6000};

// Waits for the instrument's first status. HostError Tray if none comes.
void WaitForStatus(const InstrumentEntry& entry);

// Sets the home flag and chills the cell, as a person would; for a simulated instrument, since on a
// real one somebody has to see to the steppers. Blocks for minutes of the base's time. `say` is
// told what is done; false when `isInterrupted` answered true on the way, which is asked once a
// second. HostError Tray if the instrument refuses or the cell does not get cold.
bool PrepareSimulated(const InstrumentEntry& entry, const std::function<bool()>& isInterrupted,
                      const std::function<void(const std::string&)>& say);

}  // namespace torvell
