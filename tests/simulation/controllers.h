// The controllers that may be at the other end of the simulated line.
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

// A controller of one simulated run. It serves its port by itself.
class Controller {
 public:
  virtual ~Controller() = default;
  // The text of the discovery reply; empty where there is none.
  virtual std::string identification() const = 0;
  // Called before the controller is told to start the test with this payload.
  virtual void BeforeStart(const std::vector<uint8_t>& payload) = 0;
};

// The controller of this scenario. `port` must outlive it.
std::unique_ptr<Controller> MakeController(const Scenario& scenario, FakePort& port);

// Shows the observer the bytes that reach the module. Attached to the port before the instrument.
class PortTap : public PortWatcher {
 public:
  explicit PortTap(Observer& observer) : observer_(observer) {}
  void Receive(std::span<const uint8_t> bytes) override { observer_.BytesDelivered(bytes); }

 private:
  Observer& observer_;
};

// Tells the observer when the module has taken the bytes. Attached to the port after the
// instrument.
class TapBehind : public PortWatcher {
 public:
  explicit TapBehind(Observer& observer) : observer_(observer) {}
  void Receive(std::span<const uint8_t> /*bytes*/) override { observer_.BytesTaken(); }

 private:
  Observer& observer_;
};

}  // namespace rvx::soak
