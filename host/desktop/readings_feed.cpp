#include "host/desktop/readings_feed.h"

#include <utility>

namespace torvell {
namespace {

// A frame comes twice a second; the shorter wait is for a quick end of the thread.
constexpr platform::Milliseconds kMaxWait{300};
// If the window does not take frames for so long, older ones are dropped. Only the curve suffers:
// the state needs the newest frame alone.
constexpr size_t kMaxWaiting = 4000;

}  // namespace

ReadingsFeed::ReadingsFeed(const InstrumentEntry& entry) : entry_(entry) {
  thread_ = platform::StartThread("readings " + entry.identity.portName, [this] { Main(); });
}

ReadingsFeed::~ReadingsFeed() {
  stop_.Set();
  thread_->Join();
}

std::vector<TimedReadings> ReadingsFeed::Take() {
  platform::PlainGuard guard(lock_);
  return std::exchange(waiting_, {});
}

void ReadingsFeed::Main() {
  uint64_t seen = 0;
  while (!stop_.TryWait()) {
    if (!entry_.scripting->WaitForReadings(seen, platform::Deadline::After(kMaxWait))) continue;
    TimedReadings entry{platform::MonotonicTime(), entry_.scripting->GetReadings()};
    seen = entry.readings.sequence;
    platform::PlainGuard guard(lock_);
    if (waiting_.size() >= kMaxWaiting) waiting_.erase(waiting_.begin());
    waiting_.push_back(std::move(entry));
  }
}

}  // namespace torvell
