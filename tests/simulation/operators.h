// The people at the instrument: they fill trays, start, pause, resume, abort, change, and send
// commands of their own.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "module/execution/visc_action.h"
#include "module/instrument/c_rvx.h"
#include "platform/thread.h"
#include "tests/simulation/faulty_line.h"
#include "tests/simulation/host_faults.h"
#include "tests/simulation/observer.h"
#include "tests/simulation/scenario.h"

namespace rvx::soak {

// The desk at which they all stand. Any thread may do a deed; the instrument is put on it and taken
// off only while nobody stands there.
class Desk {
 public:
  Desk(const Scenario& scenario, Observer& observer, HostFaults& host, FaultyLine& line);

  void Put(C_RVX* instrument) { instrument_ = instrument; }

  // Puts new actions into the tray.
  void Fill(const std::vector<PlannedSample>& samples);
  // Takes all actions out of the tray.
  void Clear();
  // Starts the tray with a watcher of its own: the watcher, or null if it was refused.
  TrayRecord* Start();
  void Abort();
  // Ends a pause, and first what a lost CAB has left going at the instrument.
  void Resume();

  // Starts the operators of the scenario; Leave ends them and waits for them.
  void Come();
  void Leave();

 private:
  struct Client;
  void Work(size_t who);
  void Do(const OperatorStep& step, size_t who);
  void Rename(int position);
  void Replace(int position);
  void Reload();
  void Command(size_t who, platform::Milliseconds lives);
  void RunOwn(std::unique_ptr<Action> action, const OperatorStep& step);
  std::unique_ptr<C_RVXViscAction> MakeSample(const PlannedSample& plan);
  std::string NextName(const char* kind);
  // Whether the instrument is running something that nobody has ended, as both it and the module
  // see it.
  bool IsRunOpen();

  const Scenario& scenario_;
  Observer& observer_;
  HostFaults& host_;
  FaultyLine& line_;
  C_RVX* instrument_ = nullptr;
  std::atomic<int> names_{0};
  std::atomic<bool> ownRuns_{false};  // an action outside the tray
  platform::Event leave_{"soak: operators leave", platform::Event::Mode::ManualReset};
  std::vector<std::shared_ptr<platform::Thread>> people_;
};

}  // namespace rvx::soak
