// Turns a choice of standards into the tray that measures them.
#pragma once

#include "module/calibration/standard_picker.h"

namespace rvx {

class C_RVX;

// Fills the tray from its first position on with a Verify Known Viscosity action for each position
// of the plan; all others become empty, whatever stood there. False, and the tray is as it was, if
// the plan has more positions than the tray. Tells the host. Call it while the instrument is idle,
// where GetStandards may be called, with no lock held.
bool FillCalibrationTray(C_RVX& instrument, const CalibrationTrayPlan& plan);

}  // namespace rvx
