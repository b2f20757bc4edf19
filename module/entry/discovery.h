// Finds the instruments on the serial ports.
#pragma once

#include "boundary/viscometer_instrument.h"

namespace rvx {

// Does the work of CreateInstruments. Blocks its thread for the whole scan: 1000 ms for each port
// that is tried and about 200 ms for each address. No instrument is found twice in the life of the
// process.
void DiscoverInstruments(ArrayOfInstruments& instruments);

// Makes discovery find instruments again, as a new process would; for tests only. The instruments
// found before must have been deleted.
void ForgetDiscoveredInstruments();

}  // namespace rvx
