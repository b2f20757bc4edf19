// The motion that a screen has started, and the abort that has to end it.
#pragma once

#include <utility>

#include "module/instrument/lock_ranks.h"
#include "platform/lock.h"

namespace rvx {

class C_RVX;

// One for each started screen. A screen may be ended by its user, by a stop, by a failure or by an
// instrument that closes, on three different threads; the first of them sends the CAB, and no
// motion can be started after it. Any thread.
class ScreenMotion {
 public:
  // `instrument` must outlive it.
  explicit ScreenMotion(C_RVX& instrument) : instrument_(instrument) {}
  ScreenMotion(const ScreenMotion&) = delete;
  ScreenMotion& operator=(const ScreenMotion&) = delete;

  // Calls `send`, which queues the command that starts a motion and returns whether it did, and
  // returns the same. Once the screen has ended, returns false without a call. An exception of
  // `send` passes through, and counts as a motion, since the command may have been queued before.
  template <class Send>
  bool Begin(const Send& send) {
    platform::PlainGuard guard(lock_);
    if (ended_) return false;
    const bool moved = std::exchange(moving_, true);
    if (send()) return true;
    moving_ = moved;
    return false;
  }
  // Sends CAB if a motion was begun and has not ended.
  void Halt();
  // Notes that the motion has ended by itself, so that no CAB is needed.
  void NoteRest();
  // Call it when the screen ends: does what Halt does, and Begin sends nothing any more. Further
  // calls do nothing.
  void End();

 private:
  void HaltLocked() REQUIRES(lock_);

  C_RVX& instrument_;
  platform::PlainLock lock_{"screen motion", kScreenMotionLockRank};
  bool moving_ GUARDED_BY(lock_) = false;
  bool ended_ GUARDED_BY(lock_) = false;
};

}  // namespace rvx
