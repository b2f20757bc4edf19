// In which ways virtual time is unkind to the program. Without it CPU time costs nothing, so that a
// time-out never overtakes a thread that could run, and most races would never happen.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/random_stream.h"
#include "platform/time_base.h"

namespace platform::detail {

class ScheduleFaults {
 public:
  ScheduleFaults(const VirtualOptions& options, uint64_t seed);

  // How long the running thread is held up at the scheduling point that it passes; mostly 0.
  Microseconds StallHere() { return ++points_ == nextStall_ ? DrawStall() : Microseconds(0); }
  // How far a jump of time goes beyond its deadline; mostly 0.
  Microseconds Overshoot();
  // Whether a waiting thread wakes for nothing at this step.
  bool WakesForNothing() { return spuriousOneIn_ != 0 && spurious_.OneIn(spuriousOneIn_); }
  // Which of `count` waiting threads it is.
  size_t ChooseWaiting(size_t count) { return spurious_.Below(static_cast<uint32_t>(count)); }

  // No thread is held up any more.
  void EndStalls() { nextStall_ = 0; }

  uint64_t points() const { return points_; }
  uint64_t stalls() const { return stallsMade_; }
  uint64_t overshoots() const { return overshoots_; }

 private:
  void PlaceStalls(const VirtualOptions& options);
  Microseconds DrawStall();

  RandomStream stalls_;
  RandomStream late_;
  RandomStream spurious_;
  std::vector<uint64_t> stallPoints_;  // where the stalls still to come are, the next one last
  uint64_t nextStall_ = 0;             // 0: none is left
  uint64_t points_ = 0;
  uint32_t lateOneIn_ = 0;      // 0: never
  uint32_t spuriousOneIn_ = 0;  // 0: never
  uint64_t stallsMade_ = 0;
  uint64_t overshoots_ = 0;
};

}  // namespace platform::detail
