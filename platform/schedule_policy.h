// Who goes next under virtual time. The scheduler asks; a policy only draws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace platform::detail {

class SchedulePolicy {
 public:
  virtual ~SchedulePolicy() = default;
  // Whether the running task, which could go on, lets another one go first. Asked at each lock, Set
  // and start of a thread, if somebody else is ready.
  virtual bool LeavesEarly() = 0;
  // Which of `count` ready tasks goes next, at least 2: 0 to count - 1. They stand in an order that
  // the same run always repeats.
  virtual size_t Choose(size_t count) = 0;
};

// Sticky random: a running task goes on unless a draw says otherwise (once in 5, 20 or 100 times,
// by the seed), and every ready task has the same chance. All draws come from the seed.
std::unique_ptr<SchedulePolicy> MakeStickyPolicy(uint64_t seed);

}  // namespace platform::detail
