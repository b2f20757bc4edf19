// The tray of an instrument as the window reads and changes it, with the archive that keeps it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/desktop/tray_rows.h"

namespace torvell {

// What a tray held at one moment.
struct TraySnapshot {
  int size = 0;                      // positions, filled or not
  std::vector<TrayPosition> filled;  // in order
  std::vector<TrayCell> cells;       // one for each position

  // Seconds of the base's time that a run would take.
  int EstimatedSeconds() const;
};

// Every operation may block, so only the jobs of a worker call them. Each throws HostError or an
// exception of the instrument, and leaves the tray as it was when it does.
class TrayStore {
 public:
  virtual ~TrayStore() = default;
  virtual TraySnapshot Read() = 0;
  // Puts the cells in, all or none. Returns the edit that takes them out again.
  virtual TrayEdit Apply(const TrayEdit& edit) = 0;
  // Replaces the tray by a file's, and ends the record of an interrupted run. Returns the edit that
  // brings back what the tray held.
  virtual TrayEdit Load(const std::string& path) = 0;
  // Takes out what an interrupted run has measured. Returns a text for each thing that it did.
  virtual std::vector<std::string> KeepRest() = 0;
  // Empties the tray, and ends the record of an interrupted run.
  virtual void DropInterrupted() = 0;
  // An action in no tray, for a person to edit: a new one of this kind, or a copy of a cell's.
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
