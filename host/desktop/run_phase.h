// The phases of a tray's run, from the request to start it until its results are removed.
#pragma once

namespace torvell {

enum class RunPhase {
  // Nothing runs and no results wait: the tray can be edited. A start leads to StartWaiting.
  Idle,
  // A start was asked for and waits for the edits that were made before it. Leads to Starting when
  // they are in the tray, or to Idle if the window closes first.
  StartWaiting,
  // The instrument is asked to start the tray. Leads to Running, or to Idle if it refuses.
  Starting,
  // The tray runs. A request to pause leads to PauseRequested, a pause that the instrument makes by
  // itself to Paused, an abort to Aborting, the tray's last event to Ended.
  Running,
  // A pause was asked for and waits for the instrument, which may finish the present sample first.
  // Leads to Paused, to Running if the tray is resumed, to Aborting or Ended.
  PauseRequested,
  // Waits for the user. Leads to Running when the instrument goes on, to Aborting or Ended.
  Paused,
  // The instrument is asked to abort; waits for the tray's last event. Leads to Ended, or to
  // Running or Paused if nothing was aborted.
  Aborting,
  // The run is over. Its results stay in the tray until the user acknowledges them, which leads to
  // Idle.
  Ended
};

// Returns whether the screen shows the instrument's own tray and not that of a run, so that edits
// can be applied.
inline bool IsTrayOpen(RunPhase phase) {
  return phase == RunPhase::Idle || phase == RunPhase::StartWaiting || phase == RunPhase::Starting;
}

// Returns whether a run has begun or is about to begin, and is not over.
inline bool IsRunning(RunPhase phase) {
  return phase != RunPhase::Idle && phase != RunPhase::Ended;
}

}  // namespace torvell
