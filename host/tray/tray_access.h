// The tray of an instrument: read, filled from a file, emptied, stored.
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

// The actions of every position, kept alive. They are asked without the tray's lock, since some
// answers need other locks of the module.
TrayActions HoldTray(const InstrumentEntry& entry);

// The filled positions, in order.
std::vector<TrayPosition> ReadTray(const InstrumentEntry& entry);

// The file's form of a tray's sample actions.
std::vector<TrayFilePosition> TrayFileOf(const std::vector<TrayPosition>& tray);

// The actions for a file of this path, one for each position of the tray. HostError: BadInput
// with every problem, or NotAllowed; in both cases nothing has changed anywhere.
TrayActions BuildTray(const InstrumentEntry& entry, const std::string& path);

// Empty actions for a whole tray.
TrayActions EmptyTray(const InstrumentEntry& entry);

// Stores the instrument with its tray as it stands. HostError Database.
void StoreTray(Host& host, const InstrumentEntry& entry);

// Actions and the positions, from 0, that they are for.
using TrayPut = std::map<int, std::shared_ptr<rvx::Action>>;

// Puts the actions into the tray, all at once, and stores the instrument with them. Returns the
// actions that stood there, stopped. Not on the user-interface thread. HostError, with the tray as
// it was: NotAllowed below level 10, Tray while it runs, Database if it can't be stored.
TrayPut PutIntoTray(Host& host, const InstrumentEntry& entry, TrayPut put);

// The same for a whole tray.
void ReplaceTray(Host& host, const InstrumentEntry& entry, TrayActions actions);

// Takes out of the tray what an interrupted run has measured: whole positions become empty, of a
// position that was measured in part the remaining tests stay. Returns what it did, a text for each
// thing.
std::vector<std::string> KeepWhatIsNotMeasured(Host& host, const InstrumentEntry& entry,
                                               const InterruptedTray& interrupted);

// "position 2 (OIL-A): measured" for each position, and when the run began.
std::string DescribeInterrupted(const InterruptedTray& interrupted);

// Ends the record of an interrupted run of this instrument, if there is one.
void CloseInterrupted(Host& host, const InstrumentEntry& entry);

}  // namespace torvell
