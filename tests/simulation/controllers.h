// The controllers that may stand at the other end of the simulated line.
#pragma once

#include <memory>
#include <string>

#include "boundary/host.h"
#include "module/simulator/simulated_instrument.h"
#include "tests/simulation/observer.h"
#include "tests/simulation/scenario.h"
#include "tests/support/fake_port.h"
#include "tests/support/scripted_controller.h"

namespace rvx::soak {

class Controller {
 public:
  virtual ~Controller() = default;
  // The text of the discovery reply; empty where there is none.
  virtual std::string identification() const = 0;
  // The test with this payload is about to be started.
  virtual void BeforeStart(const std::vector<uint8_t>& payload) = 0;
};

// `port` must outlive it.
std::unique_ptr<Controller> MakeController(const Scenario& scenario, FakePort& port);

// Show the observer what reaches the module. The one is attached to the port before the instrument
// is, the other behind it.
class PortTap : public PortWatcher {
 public:
  explicit PortTap(Observer& observer) : observer_(observer) {}
  void Receive(std::span<const uint8_t> bytes) override { observer_.BytesDelivered(bytes); }

 private:
  Observer& observer_;
};

class TapBehind : public PortWatcher {
 public:
  explicit TapBehind(Observer& observer) : observer_(observer) {}
  void Receive(std::span<const uint8_t> /*bytes*/) override { observer_.BytesTaken(); }

 private:
  Observer& observer_;
};

}  // namespace rvx::soak
