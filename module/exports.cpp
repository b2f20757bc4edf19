// The module's own export.
#include "instrument/host/host.h"
#include "module/discovery.h"

extern "C" void CreateInstruments(rvx::ArrayOfInstruments** array) {
  rvx::DiscoverInstruments(**array);
}
