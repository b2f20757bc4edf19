#include "module/instrument/status_history.h"

#include <algorithm>

namespace rvx {

void StatusHistory::Keep(const StatusRecord& record) {
  const platform::Microseconds now = platform::MonotonicTime();
  platform::PlainGuard guard(lock_);
  last_ = {record, last_.sequence + 1, now};
  frames_[last_.sequence % kStatusHistory] = last_;
}

void StatusHistory::SetLastTag(std::string_view tag) {
  platform::PlainGuard guard(lock_);
  last_.record.SetLastTag(tag);
}

StatusFrame StatusHistory::Last() {
  platform::PlainGuard guard(lock_);
  return last_;
}

bool StatusHistory::Next(uint64_t& sequence, StatusFrame& frame) {
  platform::PlainGuard guard(lock_);
  if (last_.sequence <= sequence) {
    frame = last_;
    return false;
  }
  const uint64_t lost = last_.sequence > kStatusHistory ? last_.sequence - kStatusHistory : 0;
  sequence = std::max(sequence, lost) + 1;
  frame = frames_[sequence % kStatusHistory];
  return true;
}

uint64_t StatusHistory::GetSequence() {
  platform::PlainGuard guard(lock_);
  return last_.sequence;
}

void StatusHistory::AddEvent(platform::Event* event) {
  platform::PlainGuard guard(eventsLock_);
  events_.push_back(event);
}

void StatusHistory::RemoveEvent(platform::Event* event) {
  platform::PlainGuard guard(eventsLock_);
  std::erase(events_, event);
}

void StatusHistory::SetEvents() {
  platform::PlainGuard guard(eventsLock_);
  for (platform::Event* event : events_) event->Set();
}

}  // namespace rvx
