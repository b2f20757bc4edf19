// The people at the instrument: they fill trays, start, pause, resume, abort, change, and send
// further commands.
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

// What the operators do with one instrument. Any thread may call it, except Put, which requires
// that no operator is at work.
class Desk {
 public:
  Desk(const Scenario& scenario, Observer& observer, HostFaults& host, FaultyLine& line);

  // Sets the instrument; null takes it away. Not owned.
  void Put(C_RVX* instrument) { instrument_ = instrument; }

  // Puts new actions for these samples into the tray.
  void Fill(const std::vector<PlannedSample>& samples);
  // Takes all actions out of the tray.
  void Clear();
  // Starts the tray with a new watcher. Returns the watcher, or null if the start was refused.
  TrayRecord* Start();
  void Abort();
  // Ends a pause. Before that it aborts what a lost CAB has left running at the instrument.
  void Resume();

  // Starts the threads of the scenario's operators. Leave ends them and waits for them.
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
  // Whether both the controller and the module see a run that has not been ended.
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
