#include "host/tray/run_events.h"

#include <utility>

namespace torvell {

void RunEventQueue::Push(RunEvent event) {
  {
    const platform::PlainGuard guard(lock_);
    events_.push_back(std::move(event));
  }
  event_.Set();
}

std::vector<RunEvent> RunEventQueue::TakeAll() {
  const platform::PlainGuard guard(lock_);
  return std::exchange(events_, {});
}

void RunRecorder::SampleStatus(int32_t position, const std::string& text) {
  RunEvent event = Make(RunEvent::Kind::Status, position);
  event.text = text;
  queue_.Push(std::move(event));
}

void RunRecorder::SampleStored(int32_t position, const StoredSample& sample) {
  RunEvent event = Make(RunEvent::Kind::Sample, position);
  event.sample = sample;
  queue_.Push(std::move(event));
}

void RunRecorder::PauseChanged(bool paused) {
  RunEvent event = Make(RunEvent::Kind::PauseChanged);
  event.paused = paused;
  queue_.Push(std::move(event));
}

void RunRecorder::ErrorReported(const ErrorReport& report) {
  RunEvent event = Make(RunEvent::Kind::Error, report.position);
  event.error = report;
  queue_.Push(std::move(event));
}

}  // namespace torvell
