// Reads and changes the tray of an instrument for the window, and stores it in the archive.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/desktop/tray_rows.h"

namespace torvell {

// The content of a tray at one moment.
struct TraySnapshot {
  int size = 0;                      // positions, filled or not
  std::vector<TrayPosition> filled;  // in order
  std::vector<TrayCell> cells;       // one for each position

  // Estimated seconds, of the time base, that a run takes.
  int EstimatedSeconds() const;
};

// Every operation may block, so only jobs of a worker call them. Each throws HostError or an
// exception of the instrument, and then leaves the tray unchanged.
class TrayStore {
 public:
  virtual ~TrayStore() = default;
  virtual TraySnapshot Read() = 0;
  // Puts the cells into the tray, all or none. Returns the edit that undoes it.
  virtual TrayEdit Apply(const TrayEdit& edit) = 0;
  // Replaces the tray by that of a file, and ends the record of an interrupted run. Returns the
  // edit that restores the earlier tray.
  virtual TrayEdit Load(const std::string& path) = 0;
  // Removes what an interrupted run has measured. Returns texts for people, one for each thing that
  // it did.
  virtual std::vector<std::string> KeepRest() = 0;
  // Empties the tray, and ends the record of an interrupted run.
  virtual void DropInterrupted() = 0;
  // Returns an action in no tray, for the user to edit: a new one of this kind, or a copy of a
  // cell's.
  virtual std::shared_ptr<rvx::Action> MakeSample(int kind) = 0;
  virtual std::shared_ptr<rvx::Action> MakeCopy(const TrayCell& cell) = 0;
};

// The tray of a real or simulated instrument of the host.
class InstrumentTray : public TrayStore {
 public:
  InstrumentTray(Host& host, const InstrumentEntry& entry) : host_(host), entry_(entry) {}

  TraySnapshot Read() override;
  TrayEdit Apply(const TrayEdit& edit) override;
  TrayEdit Load(const std::string& path) override;
  std::vector<std::string> KeepRest() override;
  void DropInterrupted() override;
  std::shared_ptr<rvx::Action> MakeSample(int kind) override;
  std::shared_ptr<rvx::Action> MakeCopy(const TrayCell& cell) override;

 private:
  Host& host_;
  const InstrumentEntry entry_;
};

}  // namespace torvell
