// Which task runs next under virtual time. The scheduler asks; a policy only draws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/virtual_options.h"

namespace platform::detail {

class Task;

class SchedulePolicy {
 public:
  virtual ~SchedulePolicy() = default;
  // Whether the running task, which could go on, lets one of the ready tasks go first; at least one
  // is. Asked at each lock, Set and start of a thread.
  virtual bool LeavesEarly(Task& running, std::span<Task* const> ready) = 0;
  // Which of the ready tasks, at least 2, runs next: its index. The same run always has them in the
  // same order. `previous` is the number of the task that ran before.
  virtual size_t Choose(std::span<Task* const> ready, uint32_t previous) = 0;
  // The task gives its turn away because it keeps asking for something that has not happened yet.
  virtual void StandBack(Task& /*task*/) {}
  // Something has begun in whose course a race is likely.
  virtual void OpenWindow() {}
};

// The policy that the options name. All its draws come from the seed's stream for schedules.
std::unique_ptr<SchedulePolicy> MakeSchedulePolicy(const VirtualOptions& options, uint64_t seed);

}  // namespace platform::detail
