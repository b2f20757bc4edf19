#include "host/desktop/host_events.h"

#include <utility>

namespace torvell {

HostEvents::HostEvents(Host& host, GuiThread& gui) : host_(host), gui_(gui) {
  host_.errors().AddListener(this);
  host_.samples().AddListener(this);
  monitor_ = host_.instruments().RegisterMonitor(this);
  host_.instruments().AddSelectionListener(this);
}

HostEvents::~HostEvents() {
  host_.instruments().RemoveSelectionListener(this);
  host_.instruments().UnregisterMonitor(monitor_);
  host_.samples().RemoveListener(this);
  host_.errors().RemoveListener(this);
}

void HostEvents::Post(std::function<void(HostEvents&)> emit) {
  gui_.Post([self = self_, emit = std::move(emit)] {
    if (!self.isNull()) emit(*self);
  });
}

void HostEvents::ErrorReported(const ErrorReport& report) {
  Post([report](HostEvents& self) { Q_EMIT self.Reported(report); });
}

// The monitor's call is ignored: the error store has already passed on the same report.
void HostEvents::ErrorReported(rvx::ActionErrorRecord) {}

void HostEvents::SampleStored(const rvx::Sample&, const SampleOrigin&) {
  Post([](HostEvents& self) { Q_EMIT self.Stored(); });
}

void HostEvents::InstrumentsChanged(int32_t) {
  Post([](HostEvents& self) { Q_EMIT self.InstrumentChanged(); });
}

void HostEvents::InstrumentSelected(int32_t index) {
  Post([index](HostEvents& self) { Q_EMIT self.SelectionWanted(index); });
}

}  // namespace torvell
