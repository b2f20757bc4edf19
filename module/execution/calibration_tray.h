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
// of the plan; all others become empty, whatever they contained. Tells the host. The tray is
// unchanged unless the result is Done. Call it while the instrument is idle, on a thread that may
// call GetStandards, with no lock held.
TrayFilling FillCalibrationTray(C_RVX& instrument, const CalibrationTrayPlan& plan);

}  // namespace rvx
