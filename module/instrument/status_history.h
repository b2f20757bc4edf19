// The status frames of an instrument: the last one, the ones before it, and the events of threads
// that wait for the next.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "module/instrument/lock_ranks.h"
#include "module/instrument/monitor_readings.h"
#include "module/protocol/status_record.h"
#include "platform/event.h"
#include "platform/lock.h"

namespace rvx {

// Status frames that are kept for threads that run late: two minutes of a run. A thread that is
// later than that loses readings.
inline constexpr size_t kStatusHistory = 256;

// Any thread, except where an operation says otherwise.
class StatusHistory {
 public:
  // Adds a frame that has just come. On the thread that hands over received bytes.
  void Keep(const StatusRecord& record);
  // Puts the tag of a reply that carries no status into the last frame; `tag` has two letters.
  void SetLastTag(std::string_view tag);

  // The last frame; one with the sequence 0 before any has come.
  StatusFrame Last();
  // Gets the frame that follows number `sequence`, sets `sequence` to its number and returns true.
  // If none follows, gets the last frame again and returns false. A thread that is more than
  // kStatusHistory frames late goes on with the oldest one that is kept.
  bool Next(uint64_t& sequence, StatusFrame& frame);
  // Status frames received so far.
  uint64_t GetSequence();

  // `event` is set after each processed frame until it is removed. Not owned.
  void AddEvent(platform::Event* event);
  void RemoveEvent(platform::Event* event);
  void SetEvents();

 private:
  platform::PlainLock lock_{"status", kStatusLockRank};
  StatusFrame last_ GUARDED_BY(lock_);
  // Frame n is at n modulo the size.
  std::array<StatusFrame, kStatusHistory> frames_ GUARDED_BY(lock_);

  platform::PlainLock eventsLock_{"status events", platform::kLeafRank - 1};
  std::vector<platform::Event*> events_ GUARDED_BY(eventsLock_);
};

}  // namespace rvx
