// The status window of an instrument, if the host has asked for one.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include "module/instrument/lock_ranks.h"
#include "module/instrument/status_window.h"
#include "platform/lock.h"

namespace rvx {

class StatusWindowHolder {
 public:
  // `read` returns what the window shows; called with the window's lock held.
  explicit StatusWindowHolder(std::function<StatusReadings()> read) : read_(std::move(read)) {}

  // Makes the window as a child of `parent`, or returns the one that is open. Null if it can't be
  // made. User-interface thread.
  WindowHandle* Show(WindowHandle* parent);
  // User-interface thread.
  void Close();
  // Hands the present readings to the window, if there is one. Any thread, with no lock held.
  void Refresh();

 private:
  const std::function<StatusReadings()> read_;

  platform::RecursiveLock lock_{"status window", kStatusWindowLockRank};
  std::unique_ptr<StatusWindow> window_ GUARDED_BY(lock_);
  // So that frames without a window take no lock.
  std::atomic<bool> hasWindow_{false};
};

}  // namespace rvx
