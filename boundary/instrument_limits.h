// Limits of an instrument that host and module must agree on.
#pragma once

#include "platform/time_base.h"

namespace rvx {

// Values older than this are shown as old: a status frame comes every half second, so several polls
// have failed by then.
inline constexpr platform::Milliseconds kStaleAfter{5000};

// Degrees C; a tray is started only below this cell temperature.
inline constexpr double kWarmestStart = 10.0;

}  // namespace rvx
