// The progress of a tray run: updated by its events, shown by the view, evaluated at the end.
#pragma once

#include <string>
#include <vector>

#include "host/core/instrument_list.h"
#include "host/tray/run_events.h"
#include "host/tray/tray_access.h"
#include "platform/time_base.h"

namespace torvell {

struct RunPosition {
  TrayPosition plan;
  bool started = false;
  bool finished = false;
  std::vector<StoredSample> samples;
};

class RunState {
 public:
  RunState(InstrumentEntry entry, const std::vector<TrayPosition>& tray);

  const InstrumentEntry& entry() const { return entry_; }
  const std::vector<RunPosition>& positions() const { return positions_; }
  // Returns the filled position that runs; null between samples.
  const RunPosition* Current() const;
  const std::string& statusText() const { return statusText_; }
  bool paused() const { return paused_; }
  bool finished() const { return finished_; }
  int samples() const { return samples_; }
  int errors() const { return errors_; }
  bool aborted() const { return aborted_; }
  // Returns how many samples the whole tray is to give.
  int SamplesDue() const;

  // Takes in an event. Returns false for an event that no person or script needs: an empty position
  // that was passed, or the start of a stage that runs no position (the motor's preconditioning,
  // the way back), which the tray reports as position 0.
  bool Take(const RunEvent& event);
  void MarkAborted() { aborted_ = true; }
  // Ends a run that could not start or that has no further events.
  void MarkFinished() { finished_ = true; }

  // Returns the estimated seconds of the whole tray, from its settings alone.
  double TotalSeconds() const;
  // Returns the estimated seconds until the end. The finished samples tell how much slower or
  // faster this instrument is than the estimate; pauses are not foreseen. `now` is of
  // platform::MonotonicTime.
  double SecondsLeft(platform::Microseconds now) const;
  // Returns how much of the time is over, 0 to 1.
  double PartDone(platform::Microseconds now) const;

 private:
  RunPosition* Find(int32_t position);
  bool TakeSampleStarted(RunPosition* position);
  bool TakeSampleFinished(RunPosition* position);
  double Pace() const;
  double SecondsBehind(platform::Microseconds now) const;
  double CurrentSecondsLeft(const RunPosition& current, platform::Microseconds now) const;

  InstrumentEntry entry_;
  std::vector<RunPosition> positions_;
  int32_t current_ = -1;
  // The next start is that of the first stage: true at the beginning, and again after a pause
  // within the first stage.
  bool beforeFirstStage_ = true;
  bool inFirstStage_ = false;
  std::string statusText_;
  platform::Microseconds currentStarted_{0};
  bool currentWasPaused_ = false;
  // What the samples that finished without a pause took, and what had been estimated for them.
  double measuredSeconds_ = 0.0;
  double estimatedSeconds_ = 0.0;
  bool paused_ = false;
  bool finished_ = false;
  bool aborted_ = false;
  int samples_ = 0;
  int errors_ = 0;
};

// Returns whether the report tells of a failure, unlike a reminder such as a check standard that is
// due.
inline bool IsFailure(const ErrorReport& report) {
  return report.kind != 0 || report.sampleFailure;
}

}  // namespace torvell
