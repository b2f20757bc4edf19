// How far a tray run is: kept by its events, shown by the view, judged at the end.
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
  // The filled position that runs; null between samples.
  const RunPosition* Current() const;
  const std::string& statusText() const { return statusText_; }
  bool paused() const { return paused_; }
  bool finished() const { return finished_; }
  int samples() const { return samples_; }
  int errors() const { return errors_; }
  bool aborted() const { return aborted_; }
  // Samples that should be there at the end of the whole tray.
  int SamplesDue() const;

  // Takes an event over. False for one that no person or script needs: an empty position that was
  // run through, or the start of a stage that runs no position (the motor's preconditioning, the
  // way back), which the tray announces like position 0.
  bool Take(const RunEvent& event);
  void MarkAborted() { aborted_ = true; }
  // The run could not start or has no further events.
  void MarkFinished() { finished_ = true; }

  // Estimated seconds of the whole tray, before anything of it is known.
  double TotalSeconds() const;
  // Estimated seconds until the end. The samples that have finished tell how much slower or faster
  // this instrument is than the estimate; a pause is not foreseen.
  double SecondsLeft(platform::Microseconds now) const;
  // How much of the time is over, 0 to 1.
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
  // The next start is that of the first stage: true until it has come, and again when it was
  // paused.
  bool beforeFirstStage_ = true;
  bool inFirstStage_ = false;
  std::string statusText_;
  platform::Microseconds currentStarted_{0};
  bool currentWasPaused_ = false;
  // Of the samples that finished without a pause: what they took, and what had been estimated.
  double measuredSeconds_ = 0.0;
  double estimatedSeconds_ = 0.0;
  bool paused_ = false;
  bool finished_ = false;
  bool aborted_ = false;
  int samples_ = 0;
  int errors_ = 0;
};

// A report that says that something failed, unlike a reminder such as a check standard that is due.
inline bool IsFailure(const ErrorReport& report) {
  return report.kind != 0 || report.sampleFailure;
}

}  // namespace torvell
