// One simulated run: a host, a line, an instrument, operators, and their faults.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "module/instrument/c_rvx.h"
#include "tests/simulation/controllers.h"
#include "tests/simulation/faulty_line.h"
#include "tests/simulation/host_faults.h"
#include "tests/simulation/observer.h"
#include "tests/simulation/operators.h"
#include "tests/simulation/scenario.h"
#include "tests/support/fake_host.h"

namespace rvx::soak {

// Must be made, and Run called, inside a program under virtual time.
class World {
 public:
  World(const Scenario& scenario, RunPage& page);
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  // Runs the drawn tray with its faults. Then, with the faults switched off, waits for the end of
  // that tray and runs a fresh one of three samples, which must succeed.
  void Run();
  uint64_t stored() const { return observer_.stored(); }

 private:
  void RunOnDeadPort();
  void OpenInstrument();
  void Configure();
  void AwaitReady();
  void StartDrawnTray();
  void RunThroughFaults();
  void DriveMishaps();
  void Calm();
  void AwaitEndOfTray();
  void RunFreshTray();
  void CloseInstrument();
  void CheckArchive();
  void Befall(const Mishap& mishap);
  void AwaitStatus();

  const Scenario& scenario_;
  Observer observer_;
  FakeHost host_;
  std::unique_ptr<RealArchive> archive_;  // in the profile Tray
  HostFaults hostFaults_;
  FakePort& port_;
  FaultyLine line_;
  std::unique_ptr<Controller> controller_;
  PortTap tap_;
  TapBehind tapBehind_;
  std::unique_ptr<C_RVX> instrument_;
  Desk desk_;
  platform::Event over_{"soak: the faults are over", platform::Event::Mode::ManualReset};
};

}  // namespace rvx::soak
