// Controls the run of one instrument's tray.
#pragma once

#include <memory>
#include <vector>

#include "host/core/host.h"
#include "host/tray/run_events.h"
#include "host/tray/tray_access.h"

namespace torvell {

// Every operation except TakeEvents may block, so only jobs of a worker call them. Each throws
// HostError or an exception of the instrument.
class RunDriver {
 public:
  virtual ~RunDriver() = default;
  // Starts the present tray. Returns its filled positions.
  virtual std::vector<TrayPosition> Start() = 0;
  virtual void PauseAfterSample() = 0;
  virtual void PauseNow() = 0;
  virtual void Resume() = 0;
  // Aborts without a further question. Returns false if nothing was running any more.
  virtual bool Abort() = 0;
  // Waits for the end of the run and releases it.
  virtual void Release() = 0;
  // Returns the run's events since the last call, oldest first. Any thread; never waits.
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
  RunEventQueue events_;  // thread-safe: the module's threads push
  RunRecorder recorder_{events_, 0};
  std::unique_ptr<TrayRunner> runner_;  // used by jobs of the worker only
};

}  // namespace torvell
