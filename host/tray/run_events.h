// Events of tray runs, handed from the module's threads to the thread that shows them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/core/tray_runner.h"
#include "platform/event.h"
#include "platform/lock.h"

namespace torvell {

struct RunEvent {
  enum class Kind {
    TrayStarted,
    SampleStarted,
    Status,
    Sample,
    SampleFinished,
    PauseChanged,
    Error,
    TrayFinished
  };
  size_t run = 0;  // index of the run, as given to its RunRecorder
  Kind kind = Kind::TrayStarted;
  int32_t position = -1;  // from 0
  std::string text;
  bool paused = false;
  std::optional<StoredSample> sample;
  std::optional<ErrorReport> error;
};

// Any thread may push; one thread takes.
class RunEventQueue {
 public:
  RunEventQueue() : lock_("run events", platform::kLeafRank) {}
  void Push(RunEvent event);
  std::vector<RunEvent> TakeAll();
  // Set when an event was pushed; auto-reset.
  platform::Event& event() { return event_; }

 private:
  platform::PlainLock lock_;
  std::vector<RunEvent> events_ GUARDED_BY(lock_);
  platform::Event event_{"run events"};
};

// Puts one run's events into the queue.
class RunRecorder : public TrayListener {
 public:
  RunRecorder(RunEventQueue& queue, size_t run) : queue_(queue), run_(run) {}

  void TrayStarted() override { queue_.Push(Make(RunEvent::Kind::TrayStarted)); }
  void SampleStarted(int32_t position) override {
    queue_.Push(Make(RunEvent::Kind::SampleStarted, position));
  }
  void SampleStatus(int32_t position, const std::string& text) override;
  void SampleStored(int32_t position, const StoredSample& sample) override;
  void SampleFinished(int32_t position) override {
    queue_.Push(Make(RunEvent::Kind::SampleFinished, position));
  }
  void PauseChanged(bool paused) override;
  void ErrorReported(const ErrorReport& report) override;
  void TrayFinished() override { queue_.Push(Make(RunEvent::Kind::TrayFinished)); }

 private:
  RunEvent Make(RunEvent::Kind kind, int32_t position = -1) const {
    RunEvent event;
    event.run = run_;
    event.kind = kind;
    event.position = position;
    return event;
  }

  RunEventQueue& queue_;
  const size_t run_;
};

}  // namespace torvell
