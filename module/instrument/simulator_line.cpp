#include "module/instrument/simulator_line.h"

#include <utility>

#include "module/simulator/simulated_instrument.h"

namespace rvx {

class SimulatorLine::Parts : private simulator::SimReceiver {
 public:
  Parts(PortWatcher& watcher, std::unique_ptr<simulator::RotorModel> rotorModel)
      : watcher_(watcher),
        stopHandle_(*this),
        simulator_(stopHandle_, true, std::move(rotorModel)) {}
  ~Parts() override { stopHandle_.RequestStop(); }
  void Feed(const std::string& frame) { simulator_.Feed(frame); }

 private:
  void Receive(std::span<const uint8_t> frame) override { watcher_.Receive(frame); }

  PortWatcher& watcher_;
  simulator::SimStopHandle stopHandle_;
  simulator::SimulatedInstrument simulator_;
};

SimulatorLine::SimulatorLine(PortWatcher& watcher,
                             std::unique_ptr<simulator::RotorModel> rotorModel)
    : parts_(std::make_unique<Parts>(watcher, std::move(rotorModel))) {}
SimulatorLine::~SimulatorLine() = default;
void SimulatorLine::Feed(const std::string& frame) { parts_->Feed(frame); }

}  // namespace rvx
