#include "tests/simulation/controllers.h"

#include <utility>

namespace rvx::soak {
namespace {

class Scripted final : public Controller {
 public:
  Scripted(const Scenario& scenario, FakePort& port) : controller_(port, scenario.modelCode) {
    controller_.SetTemperature(-20.0);
    controller_.SetStartCount(scenario.startCount);
  }
  std::string identification() const override { return controller_.identification(); }
  void BeforeStart(const std::vector<uint8_t>& payload) override {
    controller_.SetSpeedCounts(SpeedCountsOf(payload[0]));
  }

 private:
  ScriptedController controller_;
};

// The built-in simulator behind a port. It sends the low byte of a pair first, a real controller
// the high one.
class SimulatedOnPort final : public Controller, private simulator::SimReceiver {
 public:
  explicit SimulatedOnPort(FakePort& port) : port_(port) {
    port_.SetScript([this](FakePort&, std::span<const uint8_t> bytes) {
      simulator_.Feed(std::string(bytes.begin(), bytes.end()));
    });
  }
  ~SimulatedOnPort() override {
    stopHandle_.RequestStop();
    port_.SetScript([](FakePort&, std::span<const uint8_t>) {});
  }
  std::string identification() const override { return "0QMTRVX 4 02.17SIMULATOR "; }
  void BeforeStart(const std::vector<uint8_t>& /*payload*/) override {}

 private:
  void Receive(std::span<const uint8_t> frame) override {
    constexpr size_t kData = 5;
    constexpr size_t kPairs = 6;
    std::string bytes(frame.begin(), frame.end());
    const auto swapPair = [&](size_t first) {
      for (size_t i = 0; i < 2; ++i) {
        std::swap(bytes[kData + 2 * first + i], bytes[kData + 2 * first + 2 + i]);
      }
    };
    if (bytes.size() == 44) {
      for (size_t pair = 0; pair < kPairs; ++pair) swapPair(2 * pair);
      swapPair(17);
    }
    port_.Reply(bytes);
  }

  FakePort& port_;
  simulator::SimStopHandle stopHandle_{*this};
  simulator::SimulatedInstrument simulator_{stopHandle_};
};

// No controller at the port: the module makes its own simulator.
class SimulatedInside final : public Controller {
 public:
  std::string identification() const override { return std::string(); }
  void BeforeStart(const std::vector<uint8_t>& /*payload*/) override {}
};

}  // namespace

std::unique_ptr<Controller> MakeController(const Scenario& scenario, FakePort& port) {
  switch (scenario.controller) {
    case ControllerKind::Scripted:
      return std::make_unique<Scripted>(scenario, port);
    case ControllerKind::SimulatedOnPort:
      return std::make_unique<SimulatedOnPort>(port);
    case ControllerKind::SimulatedInside:
      return std::make_unique<SimulatedInside>();
  }
  return nullptr;
}

}  // namespace rvx::soak
