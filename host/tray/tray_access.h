// Reads, fills from a file, empties and stores the tray of an instrument.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/core/host.h"
#include "host/tray/tray_file.h"

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

int TraySize(const InstrumentEntry& entry);

// Returns the actions of every position; they stay alive while the result does. Ask them without
// the tray's lock, since some answers need other locks of the module.
TrayActions HoldTray(const InstrumentEntry& entry);

// Returns the filled positions, in order.
std::vector<TrayPosition> ReadTray(const InstrumentEntry& entry);

// Returns the sample actions of a tray in the form of a tray file.
std::vector<TrayFilePosition> TrayFileOf(const std::vector<TrayPosition>& tray);

// Reads the tray file and returns its actions, one for each position of the tray. HostError:
// BadInput with every problem, or NotAllowed. Changes nothing, also on success.
TrayActions BuildTray(const InstrumentEntry& entry, const std::string& path);

// Returns empty actions for a whole tray.
TrayActions EmptyTray(const InstrumentEntry& entry);

// Stores the instrument with its present tray. HostError Database.
void StoreTray(Host& host, const InstrumentEntry& entry);

// Actions by their positions, from 0.
using TrayPut = std::map<int, std::shared_ptr<rvx::Action>>;

// Puts the actions into the tray, all at once, and stores the instrument with them. Returns the
// actions that were there before, stopped. Not on the user-interface thread. HostError, with the
// tray unchanged: NotAllowed below level 10, Tray while it runs, Database if it can't be stored.
TrayPut PutIntoTray(Host& host, const InstrumentEntry& entry, TrayPut put);

// The same for a whole tray.
void ReplaceTray(Host& host, const InstrumentEntry& entry, TrayActions actions);

// Removes from the tray what an interrupted run has measured: measured positions become empty, a
// position that was measured in part keeps its remaining tests. Returns texts for people, one for
// each thing that it did. HostError as PutIntoTray.
std::vector<std::string> KeepWhatIsNotMeasured(Host& host, const InstrumentEntry& entry,
                                               const InterruptedTray& interrupted);

// Returns when the run began, and a line "position 2 (OIL-A): measured, ..." for each position.
std::string DescribeInterrupted(const InterruptedTray& interrupted);

// Ends the record of an interrupted run of this instrument, if there is one. HostError Database.
void CloseInterrupted(Host& host, const InstrumentEntry& entry);

}  // namespace torvell
