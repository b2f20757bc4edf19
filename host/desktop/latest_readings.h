// The last status frame of an instrument, and its age.
#pragma once

#include <optional>
#include <vector>

#include "host/desktop/readings_feed.h"

namespace torvell {

// Keeps the newest of the frames that a ReadingsFeed collected. The window's thread only.
class LatestReadings {
 public:
  // Takes in the frames that arrived until `now`. Returns true if the display changes: there are
  // new values, or the values are stale and their age grows.
  bool Take(const std::vector<TimedReadings>& arrived, platform::Microseconds now);
  const rvx::InstrumentReadings& readings() const { return readings_; }
  // Returns the time from the last frame to the last call of Take; nothing before the first frame.
  // The present moment would be wrong: under a fast clock many frames arrive between two calls and
  // are not taken in yet.
  std::optional<platform::Milliseconds> Silence() const;

 private:
  rvx::InstrumentReadings readings_;
  std::optional<platform::Microseconds> arrived_;
  platform::Microseconds takenAt_{0};
  bool wasStale_ = true;
};

}  // namespace torvell
