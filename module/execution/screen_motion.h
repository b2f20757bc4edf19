// What a screen has set moving or turning, and the abort that has to end it.
#pragma once

#include "module/instrument/lock_ranks.h"
#include "platform/lock.h"

namespace rvx {

class C_RVX;

// One for each started screen. A screen may be ended by its user, by a stop, by a failure or by an
// instrument that closes, on three different threads; whoever comes first sends the CAB, and
// nothing can be set moving after that. Any thread.
class ScreenMotion {
 public:
  // `instrument` must outlive it.
  explicit ScreenMotion(C_RVX& instrument) : instrument_(instrument) {}
  ScreenMotion(const ScreenMotion&) = delete;
  ScreenMotion& operator=(const ScreenMotion&) = delete;

  // Calls `send`, which queues the command that sets something moving. False, and nothing is sent,
  // once the screen has ended.
  template <class Send>
  bool Begin(const Send& send) {
    platform::PlainGuard guard(lock_);
    if (ended_) return false;
    send();
    moving_ = true;
    return true;
  }
  // Sends CAB if something moves.
  void Halt();
  // What moved has come to rest by itself: nothing is left to end.
  void NoteRest();
  // The screen ends: Halt, and Begin sends nothing any more. Further calls do nothing.
  void End();
  bool IsMoving();

 private:
  void HaltLocked() REQUIRES(lock_);

  C_RVX& instrument_;
  platform::PlainLock lock_{"screen motion", kScreenMotionLockRank};
  bool moving_ GUARDED_BY(lock_) = false;
  bool ended_ GUARDED_BY(lock_) = false;
};

}  // namespace rvx
