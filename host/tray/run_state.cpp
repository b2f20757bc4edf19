#include "host/tray/run_state.h"

#include <algorithm>
#include <utility>

namespace torvell {

namespace {

// The tray waits this long before each position, filled or not.
constexpr double kSecondsBetweenPositions = 1.0;
// The way back behind the last sample.
constexpr double kSecondsAtTheEnd = 5.0;

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
  position->started = true;
  return true;
}

bool RunState::TakeSampleFinished(RunPosition* position) {
  current_ = -1;
  if (position == nullptr) return false;
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

double RunState::DoneSeconds(platform::Microseconds now) const {
  if (finished_) return TotalSeconds();
  double done = 0.0;
  for (const RunPosition& position : positions_) {
    const double estimate = position.plan.estimatedSeconds;
    if (position.finished) {
      done += estimate + kSecondsBetweenPositions;
    } else if (position.plan.position == current_) {
      done += std::min(estimate, static_cast<double>((now - currentStarted_).count()) / 1e6);
    }
  }
  return std::min(done, TotalSeconds());
}

}  // namespace torvell
