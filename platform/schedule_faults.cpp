#include "platform/schedule_faults.h"

#include <algorithm>
#include <functional>

namespace platform::detail {
namespace {

constexpr double kMinStall = 1'000;       // us
constexpr double kMaxStall = 2'000'000;   // us
constexpr double kMaxTail = 30'000'000;   // us
constexpr uint32_t kTailOneIn = 20;       // stalls
constexpr double kMinOvershoot = 1'000;   // us
constexpr double kMaxOvershoot = 64'000;  // us
constexpr int kMaxStalls = 20;            // in a run
constexpr int kMinHeavyStalls = 20;       // in a run that is about stalls
constexpr int kMaxHeavyStalls = 200;

}  // namespace

ScheduleFaults::ScheduleFaults(const VirtualOptions& options, uint64_t seed)
    : stalls_(seed, StreamId::Stalls),
      late_(seed, StreamId::LateWakeUps),
      spurious_(seed, StreamId::SpuriousWakeUps) {
  if (options.stalls) PlaceStalls(options);
  // Some runs are disturbed every few steps, others almost never.
  if (options.lateWakeUps) lateOneIn_ = static_cast<uint32_t>(late_.LogUniform(4, 256));
  if (options.spuriousWakeUps)
    spuriousOneIn_ = static_cast<uint32_t>(spurious_.LogUniform(16, 2048));
}

// Half of them anywhere in the run, half by the logarithm: the first points of a run are where
// threads start, and a run that ends early gets its share.
void ScheduleFaults::PlaceStalls(const VirtualOptions& options) {
  const bool heavy = options.strategy == ScheduleStrategy::StallHeavy;
  const int count =
      heavy ? stalls_.Between(kMinHeavyStalls, kMaxHeavyStalls) : stalls_.Between(1, kMaxStalls);
  const auto last = static_cast<double>(std::max<uint64_t>(options.expectedPoints, 1));
  for (int i = 0; i < count; ++i) {
    const double point = stalls_.OneIn(2) ? stalls_.Unit() * last : stalls_.LogUniform(1, last);
    stallPoints_.push_back(1 + static_cast<uint64_t>(point));
  }
  std::sort(stallPoints_.begin(), stallPoints_.end(), std::greater<>());
  stallPoints_.erase(std::unique(stallPoints_.begin(), stallPoints_.end()), stallPoints_.end());
  nextStall_ = stallPoints_.back();
}

Microseconds ScheduleFaults::DrawStall() {
  stallPoints_.pop_back();
  nextStall_ = stallPoints_.empty() ? 0 : stallPoints_.back();
  ++stallsMade_;
  const double length = stalls_.OneIn(kTailOneIn) ? stalls_.LogUniform(kMaxStall, kMaxTail)
                                                  : stalls_.LogUniform(kMinStall, kMaxStall);
  return Microseconds(static_cast<int64_t>(length));
}

Microseconds ScheduleFaults::Overshoot() {
  if (lateOneIn_ == 0 || !late_.OneIn(lateOneIn_)) return Microseconds(0);
  ++overshoots_;
  return Microseconds(static_cast<int64_t>(late_.LogUniform(kMinOvershoot, kMaxOvershoot)));
}

}  // namespace platform::detail
