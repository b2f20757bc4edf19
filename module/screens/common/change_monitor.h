// Reports changes of instruments to a screen.
#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "boundary/host.h"

namespace rvx {

// Registered with the instrument manager during its lifetime. The host reports changes on any
// thread; `refresh` is called on the GUI thread, once for several changes that come close together.
// Made and destroyed on the GUI thread.
class ChangeMonitor final : private ViscometerArrayMonitor {
 public:
  explicit ChangeMonitor(std::function<void()> refresh);
  // Once it returns `refresh` is not called any more. Waits for a call of the host in progress,
  // which itself waits for nothing.
  ~ChangeMonitor() override;
  ChangeMonitor(const ChangeMonitor&) = delete;
  ChangeMonitor& operator=(const ChangeMonitor&) = delete;

 private:
  // What a posted refresh uses, since the monitor may have been destroyed.
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
