// Runs a test's body under virtual time.
#pragma once

#include <functional>

#include "platform/time_base.h"

namespace rvx {

// The body as thread "main" under the virtual base, with a fixed time of day, so that a failure is
// repeated by its seed.
inline void RunVirtual(const std::function<void()>& body, uint64_t seed = 1) {
  platform::TimeBaseOptions options;
  options.kind = platform::TimeBaseKind::Virtual;
  options.seed = seed;
  options.startOfClock = platform::Date(2026, 1, 5, 8, 0, 0);
  platform::RunUnderTimeBase(options, [&body] {
    body();
    return 0;
  });
}

}  // namespace rvx
