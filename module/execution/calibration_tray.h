// Turns a choice of standards into the tray that measures them.
#pragma once

#include "module/calibration/standard_picker.h"

namespace rvx {

class C_RVX;

enum class TrayFilling {
  Done,
  TooLong,    // the plan has more positions than the tray
  NotAllowed  // the present user is below level 10
};

// Fills the tray from its first position on with a Verify Known Viscosity action for each position
// of the plan; all others become empty, whatever stood there. Tells the host. Unless it is done the
// tray is as it was. Call it while the instrument is idle, where GetStandards may be called, with
// no lock held.
TrayFilling FillCalibrationTray(C_RVX& instrument, const CalibrationTrayPlan& plan);

}  // namespace rvx
