// The module's own exports.
#include "boundary/host.h"
#include "boundary/version.h"
#include "module/entry/discovery.h"
#include "module/entry/screens.h"

extern "C" void CreateInstruments(rvx::ArrayOfInstruments** array) {
  rvx::InstallScreens();
  rvx::DiscoverInstruments(**array);
}

extern "C" const int32_t RvxBoundaryVersion = rvx::kBoundaryVersion;
