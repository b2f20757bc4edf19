#include "module/execution/screen_motion.h"

#include "module/instrument/c_rvx.h"

namespace rvx {

void ScreenMotion::HaltLocked() {
  if (!moving_) return;
  moving_ = false;
  instrument_.SendAbort(nullptr);
}

void ScreenMotion::Halt() {
  platform::PlainGuard guard(lock_);
  HaltLocked();
}

void ScreenMotion::NoteRest() {
  platform::PlainGuard guard(lock_);
  moving_ = false;
}

void ScreenMotion::End() {
  platform::PlainGuard guard(lock_);
  HaltLocked();
  ended_ = true;
}

}  // namespace rvx
