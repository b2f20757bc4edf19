#include "platform/schedule_policy.h"

#include <algorithm>
#include <vector>

#include "platform/random_stream.h"
#include "platform/task.h"

namespace platform::detail {
namespace {

class StickyPolicy final : public SchedulePolicy {
 public:
  StickyPolicy(uint64_t seed, int leaveOneIn) : draws_(seed, StreamId::Schedule) {
    constexpr uint32_t kOneIn[] = {5, 20, 100};
    const uint32_t drawn = kOneIn[draws_.Below(3)];
    oneIn_ = leaveOneIn > 0 ? static_cast<uint32_t>(leaveOneIn) : drawn;
  }
  bool LeavesEarly(Task& /*running*/, std::span<Task* const> /*ready*/) override {
    return draws_.OneIn(oneIn_);
  }
  size_t Choose(std::span<Task* const> ready, uint32_t /*previous*/) override {
    return draws_.Below(static_cast<uint32_t>(ready.size()));
  }

 private:
  RandomStream draws_;
  uint32_t oneIn_ = 1;
};

// Probabilistic concurrency testing: a fault that needs d events in a certain order is found with a
// chance that falls with the d-th power of the choices and not with the number of all schedules. A
// run of millions of choices would still hide it, hence the windows where something happens.
class PriorityPolicy final : public SchedulePolicy {
 public:
  PriorityPolicy(uint64_t seed, int changes) : draws_(seed, StreamId::Schedule) {
    constexpr int kChanges[] = {2, 3, 5, 10};
    const int drawn = kChanges[draws_.Below(4)];
    changesPerWindow_ = changes > 0 ? changes : drawn;
  }

  bool LeavesEarly(Task& running, std::span<Task* const> ready) override {
    if (CountChoice()) StandBack(running);
    const uint64_t own = PriorityOf(running);
    return std::any_of(ready.begin(), ready.end(),
                       [&](Task* task) { return PriorityOf(*task) > own; });
  }

  size_t Choose(std::span<Task* const> ready, uint32_t /*previous*/) override {
    const bool change = CountChoice();
    size_t best = Highest(ready);
    if (change) {
      StandBack(*ready[best]);
      best = Highest(ready);
    }
    return best;
  }

  void StandBack(Task& task) override {
    task.priorityWindow = window_;
    task.priority = --lowest_;
  }

  // Draws new priorities for all.
  void OpenWindow() override {
    if (!changes_.empty() && choice_ < kWindow) return;
    ++window_;
    choice_ = 0;
    changes_.clear();
    for (int i = 0; i < changesPerWindow_; ++i) changes_.push_back(1 + draws_.Below(kWindow));
  }

 private:
  static constexpr uint32_t kWindow = 500;                  // choices
  static constexpr uint64_t kMinDrawn = uint64_t{1} << 32;  // above all that became the last

  // True if the task that would continue becomes the last in priority at this choice.
  bool CountChoice() {
    if (choice_ >= kWindow) return false;
    ++choice_;
    return std::find(changes_.begin(), changes_.end(), choice_) != changes_.end();
  }

  uint64_t PriorityOf(Task& task) {
    if (task.priorityWindow != window_) {
      task.priorityWindow = window_;
      task.priority = kMinDrawn + (draws_.Next() >> 1);
    }
    return task.priority;
  }

  size_t Highest(std::span<Task* const> ready) {
    size_t best = 0;
    for (size_t i = 1; i < ready.size(); ++i) {
      if (PriorityOf(*ready[i]) > PriorityOf(*ready[best])) best = i;
    }
    return best;
  }

  RandomStream draws_;
  int changesPerWindow_ = 0;
  uint64_t window_ = 1;            // number of the present or last window
  uint32_t choice_ = 0;            // choices made in it
  std::vector<uint32_t> changes_;  // choices at which a task becomes the last
  uint64_t lowest_ = kMinDrawn;    // the priority given last to such a task
};

class UniformPolicy final : public SchedulePolicy {
 public:
  explicit UniformPolicy(uint64_t seed) : draws_(seed, StreamId::Schedule) {}
  // The task that leaves is among those to choose from.
  bool LeavesEarly(Task& /*running*/, std::span<Task* const> /*ready*/) override { return true; }
  size_t Choose(std::span<Task* const> ready, uint32_t /*previous*/) override {
    return draws_.Below(static_cast<uint32_t>(ready.size()));
  }

 private:
  RandomStream draws_;
};

class RoundRobinPolicy final : public SchedulePolicy {
 public:
  bool LeavesEarly(Task& /*running*/, std::span<Task* const> /*ready*/) override { return true; }
  size_t Choose(std::span<Task* const> ready, uint32_t previous) override {
    // Numbers behind the previous one first; the subtraction wraps the others to the end.
    const auto distance = [previous](const Task* task) { return task->number - previous - 1; };
    const auto next =
        std::min_element(ready.begin(), ready.end(),
                         [&](const Task* a, const Task* b) { return distance(a) < distance(b); });
    return static_cast<size_t>(next - ready.begin());
  }
};

}  // namespace

std::unique_ptr<SchedulePolicy> MakeSchedulePolicy(const VirtualOptions& options, uint64_t seed) {
  switch (options.strategy) {
    case ScheduleStrategy::Sticky:
    case ScheduleStrategy::StallHeavy:
      break;
    case ScheduleStrategy::Priority:
      return std::make_unique<PriorityPolicy>(seed, options.priorityChanges);
    case ScheduleStrategy::Uniform:
      return std::make_unique<UniformPolicy>(seed);
    case ScheduleStrategy::RoundRobin:
      return std::make_unique<RoundRobinPolicy>();
  }
  return std::make_unique<StickyPolicy>(seed, options.leaveOneIn);
}

}  // namespace platform::detail
