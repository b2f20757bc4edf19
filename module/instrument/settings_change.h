// Changes settings of an instrument as one step: rights, values, record, archive. The screens of
// the settings and the operations for programs share it.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "boundary/scripting_problem.h"

namespace rvx {

class C_RVX;

// What is done with values that the table of settings calls doubtful.
enum class Doubts {
  Refuse,    // nobody can be asked
  Confirmed  // the user has been asked
};

// What becomes of the new values if the archive does not take them.
enum class WhenNotStored {
  PutBack,     // nothing was changed
  StayInForce  // closing the instrument stores them if the archive works by then
};

// Any thread, no lock held. A result that is empty means done, otherwise it says why not.

// Requires level 50, and that no tray is running unless it is paused. At once.
ScriptingResult FindSettingsRefusal(C_RVX& instrument);

// Changes settings, given as pairs of key and value (a point as decimal sign), all or none. Checks
// the rights, the values, their levels and whether the model has the settings; writes these
// settings alone, tells the host and stores the instrument, which may block. A problem of the kind
// Archive means that the archive refused, and `whenNotStored` says what is in force then; with any
// other problem nothing was changed.
ScriptingResult ChangeSettings(C_RVX& instrument,
                               const std::vector<std::pair<std::string, std::string>>& values,
                               Doubts doubts, WhenNotStored whenNotStored);

// Tells the host that settings have changed and stores the instrument, which may block. If the
// archive refuses, calls `undo`, unless it is null, and tells the host again.
ScriptingResult StoreSettings(C_RVX& instrument, const std::function<void()>& undo);

}  // namespace rvx
