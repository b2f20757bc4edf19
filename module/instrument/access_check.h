// The rights of the present user, checked where something is changed.
#pragma once

#include <optional>
#include <string>

#include "boundary/access_levels.h"
#include "boundary/host.h"
#include "platform/text.h"

namespace rvx {

// Returns nothing if the present user has the level; otherwise why the change is refused, as
// sentences for people, in which `what` names the change ("Saving a calibration"). Any thread, no
// lock held.
inline std::optional<std::string> FindLevelRefusal(int32_t needed, const std::string& what) {
  const int32_t present = GetSecurityManager()->GetAccessLevel();
  if (present >= needed) return std::nullopt;
  return platform::FormatText(
      "%s needs level %d; the present user has level %d. Nothing was "
      "changed. Log in as a user of that level.",
      what.c_str(), needed, present);
}

}  // namespace rvx
