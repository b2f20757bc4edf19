// The tray of an instrument: read, filled from a file, emptied, stored.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/cli/session.h"
#include "host/cli/tray_file.h"

namespace torvell {

using TrayActions = std::vector<std::shared_ptr<rvx::Action>>;

// A filled position of a tray.
struct TrayPosition {
  int position = 0;  // from 0
  std::string label;
  std::string classKey;
  std::string sampleId;
  std::optional<rvx::SampleTests> tests;  // of a sample action
  int estimatedSeconds = 0;

  int TestCount() const { return tests ? static_cast<int>(tests->tests.size()) : 0; }
};

int TraySize(const FoundInstrument& found);

// The filled positions, in order.
std::vector<TrayPosition> ReadTray(const FoundInstrument& found);

// The file's form of a tray's sample actions.
std::vector<TrayFilePosition> TrayFileOf(const std::vector<TrayPosition>& tray);

// The actions for a file of this path, one for each position of the tray. CommandFailure (bad use)
// with every problem, or (not allowed), in which case nothing has changed anywhere.
TrayActions BuildTray(const FoundInstrument& found, const std::string& path);

// Empty actions for a whole tray.
TrayActions EmptyTray(const FoundInstrument& found);

// Puts the actions into the tray, all at once, and stores the instrument with them. CommandFailure
// (data failure) if it can't be stored; the tray in memory is the new one then.
void ReplaceTray(Session& session, const FoundInstrument& found, TrayActions actions);

// Takes out of the tray what an interrupted run has measured: whole positions become empty, of a
// position that was measured in part the remaining tests stay. Says what it does on standard error.
void KeepWhatIsNotMeasured(Session& session, const FoundInstrument& found,
                           const InterruptedTray& interrupted);

// "position 2 (OIL-A): measured" for each position, and when the run began.
std::string DescribeInterrupted(const InterruptedTray& interrupted);

// Ends the record of an interrupted run of this instrument, if there is one.
void CloseInterrupted(Session& session, const FoundInstrument& found);

}  // namespace torvell
