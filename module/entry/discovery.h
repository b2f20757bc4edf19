// Finds the instruments on the serial ports.
#pragma once

#include "boundary/viscometer_instrument.h"

namespace rvx {

// What CreateInstruments does. Blocks its thread for the whole scan: 1000 ms for each port that is
// tried and about 200 ms for each address. Nothing is found twice in the life of the process.
void DiscoverInstruments(ArrayOfInstruments& instruments);

// Makes discovery look again, as a new process would; for tests alone. The instruments found before
// must be gone.
void ForgetDiscoveredInstruments();

}  // namespace rvx
