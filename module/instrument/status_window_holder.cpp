#include "module/instrument/status_window_holder.h"

namespace rvx {

WindowHandle* StatusWindowHolder::Show(WindowHandle* parent) {
  platform::RecursiveGuard guard(lock_);
  // Returns an open window; a window that was destroyed with its parent is made anew.
  if (window_) {
    if (WindowHandle* open = window_->GetHandle()) return open;
  }
  const StatusWindowMaker maker = GetStatusWindowMaker();
  window_ = maker != nullptr ? maker(parent) : nullptr;
  hasWindow_ = window_ != nullptr;
  if (!window_) return nullptr;
  window_->Refresh(read_());
  return window_->GetHandle();
}

void StatusWindowHolder::Close() {
  platform::RecursiveGuard guard(lock_);
  hasWindow_ = false;
  window_.reset();
}

void StatusWindowHolder::Refresh() {
  if (!hasWindow_) return;
  platform::RecursiveGuard guard(lock_);
  if (window_) window_->Refresh(read_());
}

}  // namespace rvx
