#include "module/screens/common/change_monitor.h"

#include <utility>

#include "module/toolkit/gui_thread.h"

namespace rvx {

ChangeMonitor::ChangeMonitor(std::function<void()> refresh)
    : link_(std::make_shared<Link>()), handle_([&] {
        link_->refresh = std::move(refresh);
        return GetInstrumentManager()->RegisterMonitor(this);
      }()) {
  AssertGuiThread("ChangeMonitor");
}

ChangeMonitor::~ChangeMonitor() {
  GetInstrumentManager()->UnregisterMonitor(handle_);
  link_->refresh = nullptr;
}

void ChangeMonitor::InstrumentsChanged(int32_t /*what*/) {
  if (link_->posted.exchange(true)) return;
  PostToGuiThread([link = link_] {
    // Reset before the refresh, so that a change during the refresh is not missed.
    link->posted = false;
    // A copy: the refresh may close the screen, and this monitor with it.
    if (const auto refresh = link->refresh) refresh();
  });
}

}  // namespace rvx
