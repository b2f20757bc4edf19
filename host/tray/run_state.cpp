#include "host/tray/run_state.h"

#include <algorithm>
#include <utility>

namespace torvell {

namespace {

// The tray waits this long before each position, filled or not.
constexpr double kSecondsBetweenPositions = 1.0;
// The way back after the last sample.
constexpr double kSecondsAtTheEnd = 5.0;
// A larger difference from the estimate has a cause, such as trouble, that says nothing about the
// samples to come.
constexpr double kFastest = 0.5;
constexpr double kSlowest = 2.0;

double SecondsOf(platform::Microseconds time) { return static_cast<double>(time.count()) / 1e6; }

}  // namespace

RunState::RunState(InstrumentEntry entry, const std::vector<TrayPosition>& tray)
    : entry_(std::move(entry)) {
  for (const TrayPosition& position : tray) {
    RunPosition planned;
    planned.plan = position;
    positions_.push_back(std::move(planned));
  }
}

RunPosition* RunState::Find(int32_t position) {
  for (RunPosition& each : positions_) {
    if (each.plan.position == position) return &each;
  }
  return nullptr;
}

const RunPosition* RunState::Current() const {
  for (const RunPosition& each : positions_) {
    if (each.plan.position == current_) return &each;
  }
  return nullptr;
}

int RunState::SamplesDue() const {
  int due = 0;
  for (const RunPosition& position : positions_) due += position.plan.TestCount();
  return due;
}

bool RunState::Take(const RunEvent& event) {
  RunPosition* position = Find(event.position);
  switch (event.kind) {
    case RunEvent::Kind::TrayStarted:
      break;
    case RunEvent::Kind::SampleStarted:
      return TakeSampleStarted(position);
    case RunEvent::Kind::Status:
      statusText_ = event.text;
      break;
    case RunEvent::Kind::Sample:
      ++samples_;
      if (position != nullptr) position->samples.push_back(*event.sample);
      break;
    case RunEvent::Kind::SampleFinished:
      return TakeSampleFinished(position);
    case RunEvent::Kind::PauseChanged:
      paused_ = event.paused;
      currentWasPaused_ = true;
      beforeFirstStage_ = beforeFirstStage_ || inFirstStage_;
      break;
    case RunEvent::Kind::Error:
      if (IsFailure(*event.error)) ++errors_;
      break;
    case RunEvent::Kind::TrayFinished:
      finished_ = true;
      paused_ = false;
      current_ = -1;
      break;
  }
  return true;
}

bool RunState::TakeSampleStarted(RunPosition* position) {
  statusText_.clear();
  current_ = -1;
  inFirstStage_ = std::exchange(beforeFirstStage_, false);
  if (inFirstStage_ || position == nullptr || position->finished) return false;
  current_ = position->plan.position;
  currentStarted_ = platform::MonotonicTime();
  currentWasPaused_ = false;
  position->started = true;
  return true;
}

bool RunState::TakeSampleFinished(RunPosition* position) {
  const bool ran = position != nullptr && position->plan.position == current_;
  current_ = -1;
  if (position == nullptr) return false;
  // A sample that failed early says nothing about the others.
  if (ran && !currentWasPaused_ &&
      static_cast<int>(position->samples.size()) >= position->plan.TestCount()) {
    measuredSeconds_ += SecondsOf(platform::MonotonicTime() - currentStarted_);
    estimatedSeconds_ += position->plan.estimatedSeconds;
  }
  position->finished = true;
  return true;
}

double RunState::TotalSeconds() const {
  double total = kSecondsAtTheEnd;
  for (const RunPosition& position : positions_) total += position.plan.estimatedSeconds;
  if (!positions_.empty()) {
    total += kSecondsBetweenPositions * (positions_.back().plan.position + 1);
  }
  return total;
}

double RunState::Pace() const {
  if (estimatedSeconds_ <= 0.0) return 1.0;
  return std::clamp(measuredSeconds_ / estimatedSeconds_, kFastest, kSlowest);
}

// Limited by the results that are stored: a test that has not begun still takes its whole time, one
// that is stored takes none.
double RunState::CurrentSecondsLeft(const RunPosition& current, platform::Microseconds now) const {
  const double whole = current.plan.estimatedSeconds * Pace();
  const int tests = std::max(1, current.plan.TestCount());
  const int missing = std::max(0, tests - static_cast<int>(current.samples.size()));
  const double most = whole * missing / tests;
  const double least = whole * std::max(0, missing - 1) / tests;
  return std::clamp(whole - SecondsOf(now - currentStarted_), least, most);
}

double RunState::SecondsLeft(platform::Microseconds now) const {
  if (finished_ || positions_.empty()) return 0.0;
  double left = kSecondsAtTheEnd;
  int passed = 0;
  for (const RunPosition& position : positions_) {
    if (position.finished) {
      passed = position.plan.position + 1;
    } else if (position.plan.position == current_) {
      left += CurrentSecondsLeft(position, now);
      passed = position.plan.position + 1;
    } else if (position.started) {
      passed = position.plan.position + 1;  // it failed, and the tray went on
    } else {
      left += position.plan.estimatedSeconds * Pace();
    }
  }
  return left + kSecondsBetweenPositions * (positions_.back().plan.position + 1 - passed);
}

double RunState::SecondsBehind(platform::Microseconds now) const {
  double behind = 0.0;
  for (const RunPosition& position : positions_) {
    const double whole = position.plan.estimatedSeconds * Pace();
    if (position.finished) {
      behind += whole + kSecondsBetweenPositions;
    } else if (position.plan.position == current_) {
      behind += whole - CurrentSecondsLeft(position, now);
    }
  }
  return behind;
}

double RunState::PartDone(platform::Microseconds now) const {
  if (finished_) return 1.0;
  const double behind = SecondsBehind(now);
  const double left = SecondsLeft(now);
  return left > 0.0 ? behind / (behind + left) : 1.0;
}

}  // namespace torvell
