// Runs a test's body under virtual time.
#pragma once

#include <functional>

#include "platform/time_base.h"

namespace rvx {

// Runs the body as thread "main" under the given virtual base, with a fixed time of day unless the
// options have one, so that the seed repeats a failure.
inline void RunVirtual(const std::function<void()>& body, platform::TimeBaseOptions options) {
  options.kind = platform::TimeBaseKind::Virtual;
  if (!options.startOfClock) options.startOfClock = platform::Date(2026, 1, 5, 8, 0, 0);
  platform::RunUnderTimeBase(options, [&body] {
    body();
    return 0;
  });
}

// The same under the virtual base of a program that asks for no more than a seed.
inline void RunVirtual(const std::function<void()>& body, uint64_t seed = 1) {
  platform::TimeBaseOptions options;
  options.seed = seed;
  RunVirtual(body, options);
}

}  // namespace rvx
