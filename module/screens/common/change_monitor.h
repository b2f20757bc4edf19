// Changes of instruments, brought to a screen.
#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "boundary/host.h"

namespace rvx {

// Registered with the instrument manager for as long as it lives. The host tells of changes on any
// thread; the screen hears of them on its own, and of many at once only once. Made and destroyed on
// the GUI thread.
class ChangeMonitor final : private ViscometerArrayMonitor {
 public:
  explicit ChangeMonitor(std::function<void()> refresh);
  // Once it returns `refresh` is not called any more. Waits for a call of the host that is under
  // way, which itself waits for nothing.
  ~ChangeMonitor() override;
  ChangeMonitor(const ChangeMonitor&) = delete;
  ChangeMonitor& operator=(const ChangeMonitor&) = delete;

 private:
  // What a posted refresh looks at, when the monitor may be gone.
  struct Link {
    std::atomic<bool> posted{false};  // a refresh is on its way; any thread
    std::function<void()> refresh;    // GUI thread; empty when the monitor is gone
  };

  void ErrorReported(ActionErrorRecord /*record*/) override {}
  void InstrumentsChanged(int32_t what) override;

  const std::shared_ptr<Link> link_;
  const int32_t handle_;
};

}  // namespace rvx
