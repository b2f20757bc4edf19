// The last status frame of an instrument, and its age.
#pragma once

#include <optional>
#include <vector>

#include "host/desktop/readings_feed.h"

namespace torvell {

// Keeps the newest of the frames that a ReadingsFeed has collected. The window's thread only.
class LatestReadings {
 public:
  // Takes over what has come until `now`. True if that changes what is shown: there are new values,
  // or the values are old, whose age grows.
  bool Take(const std::vector<TimedReadings>& arrived, platform::Microseconds now);
  const rvx::InstrumentReadings& readings() const { return readings_; }
  // Time from the last frame to the last call of Take; nothing before the first frame. Not to the
  // present moment: between two calls a fast clock passes many frames that have come and were not
  // taken yet.
  std::optional<platform::Milliseconds> Silence() const;

 private:
  rvx::InstrumentReadings readings_;
  std::optional<platform::Microseconds> arrived_;
  platform::Microseconds takenAt_{0};
  bool wasStale_ = true;
};

}  // namespace torvell
