// The module's own export.
#include "instrument/host/host.h"
#include "module/discovery.h"
#include "module/screens.h"

extern "C" void CreateInstruments(rvx::ArrayOfInstruments** array) {
  rvx::InstallScreens();
  rvx::DiscoverInstruments(**array);
}
