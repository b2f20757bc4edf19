// Brings the status frames of an instrument to the window.
#pragma once

#include <optional>
#include <vector>

#include "host/core/instrument_list.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace torvell {

struct TimedReadings {
  platform::Microseconds time{0};  // MonotonicTime() at the arrival
  rvx::InstrumentReadings readings;
};

// A thread that waits for frames, so that the window's thread never does. Made and destroyed on the
// window's thread; its end takes up to a third of a second of the time base.
class ReadingsFeed {
 public:
  explicit ReadingsFeed(const InstrumentEntry& entry);
  ~ReadingsFeed();
  ReadingsFeed(const ReadingsFeed&) = delete;
  ReadingsFeed& operator=(const ReadingsFeed&) = delete;

  // Returns what has arrived since the last call, oldest first. Any thread.
  std::vector<TimedReadings> Take();

 private:
  void Main();

  const InstrumentEntry entry_;
  platform::PlainLock lock_{"readings feed", platform::kLeafRank};
  std::vector<TimedReadings> waiting_ GUARDED_BY(lock_);
  platform::Event stop_{"readings feed: stop", platform::Event::Mode::ManualReset};
  std::shared_ptr<platform::Thread> thread_;
};

}  // namespace torvell
