// Runs a test's body under virtual time.
#pragma once

#include <functional>

#include "platform/time_base.h"

namespace rvx {

// The body as thread "main" under the given virtual base, with a fixed time of day unless the
// options have one, so that a failure is repeated by its seed.
inline void RunVirtual(const std::function<void()>& body, platform::TimeBaseOptions options) {
  options.kind = platform::TimeBaseKind::Virtual;
  if (!options.startOfClock) options.startOfClock = platform::Date(2026, 1, 5, 8, 0, 0);
  platform::RunUnderTimeBase(options, [&body] {
    body();
    return 0;
  });
}

// Likewise under the virtual base that a program gets without asking for more than a seed.
inline void RunVirtual(const std::function<void()>& body, uint64_t seed = 1) {
  platform::TimeBaseOptions options;
  options.seed = seed;
  RunVirtual(body, options);
}

}  // namespace rvx
