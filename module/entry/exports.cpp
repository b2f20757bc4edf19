// The module's own export.
#include "boundary/host.h"
#include "module/entry/discovery.h"
#include "module/entry/screens.h"

extern "C" void CreateInstruments(rvx::ArrayOfInstruments** array) {
  rvx::InstallScreens();
  rvx::DiscoverInstruments(**array);
}
