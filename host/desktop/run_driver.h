// What steers the run of one instrument's tray.
#pragma once

#include <memory>
#include <vector>

#include "host/core/host.h"
#include "host/tray/run_events.h"
#include "host/tray/tray_access.h"

namespace torvell {

// Except for TakeEvents, every operation may block, so only the jobs of a worker call them. Each
// throws HostError or an exception of the instrument.
class RunDriver {
 public:
  virtual ~RunDriver() = default;
  // Starts the tray as it is. Returns its filled positions.
  virtual std::vector<TrayPosition> Start() = 0;
  virtual void PauseAfterSample() = 0;
  virtual void PauseNow() = 0;
  virtual void Resume() = 0;
  // Aborts without a further question. False if nothing ran any more.
  virtual bool Abort() = 0;
  // Waits for the end of the run, and ends its record in the journal.
  virtual void Release() = 0;
  // What the run has told since the last call, oldest first. Any thread, and it never waits.
  virtual std::vector<RunEvent> TakeEvents() = 0;
};

// The run of an instrument of the host.
class InstrumentRun : public RunDriver {
 public:
  InstrumentRun(Host& host, const InstrumentEntry& entry) : host_(host), entry_(entry) {}

  std::vector<TrayPosition> Start() override;
  void PauseAfterSample() override;
  void PauseNow() override;
  void Resume() override;
  bool Abort() override;
  void Release() override { runner_.reset(); }
  std::vector<RunEvent> TakeEvents() override { return events_.TakeAll(); }

 private:
  Host& host_;
  const InstrumentEntry entry_;
  RunEventQueue events_;  // has a lock of its own: the module's threads put in
  RunRecorder recorder_{events_, 0};
  std::unique_ptr<TrayRunner> runner_;  // the worker's jobs only
};

}  // namespace torvell
