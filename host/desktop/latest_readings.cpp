#include "host/desktop/latest_readings.h"

#include <algorithm>
#include <utility>

#include "host/desktop/instrument_state.h"

namespace torvell {

bool LatestReadings::Take(const std::vector<TimedReadings>& arrived, platform::Microseconds now) {
  takenAt_ = now;
  if (!arrived.empty()) {
    readings_ = arrived.back().readings;
    arrived_ = arrived.back().time;
  }
  const bool stale = IsStale(Silence());
  const bool turned = std::exchange(wasStale_, stale) != stale;
  return !arrived.empty() || stale || turned;
}

std::optional<platform::Milliseconds> LatestReadings::Silence() const {
  if (!arrived_) return std::nullopt;
  return std::max(platform::Milliseconds(0),
                  std::chrono::duration_cast<platform::Milliseconds>(takenAt_ - *arrived_));
}

}  // namespace torvell
