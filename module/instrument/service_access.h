// Who may serve an instrument by hand, and when. Checked where a service command is sent.
#pragma once

#include "boundary/scripting_problem.h"

namespace rvx {

class C_RVX;

// Returns nothing if the present user may give service commands now: at level 10, and while no tray
// runs. A paused tray counts as running, since it goes on with the cell, the steppers and the
// switches as it left them. Otherwise says why not. Any thread, no lock held.
ScriptingResult FindServiceRefusal(C_RVX& instrument);

}  // namespace rvx
