#include "instrument/simulator_line.h"

#include "simulator/simulated_instrument.h"

namespace rvx {

class SimulatorLine::Parts : private simulator::SimReceiver {
 public:
  explicit Parts(PortWatcher& watcher)
      : watcher_(watcher), stopHandle_(*this), simulator_(stopHandle_) {}
  ~Parts() override { stopHandle_.RequestStop(); }
  void Feed(const std::string& frame) { simulator_.Feed(frame); }

 private:
  void Receive(std::span<const uint8_t> frame) override { watcher_.Receive(frame); }

  PortWatcher& watcher_;
  simulator::SimStopHandle stopHandle_;
  simulator::SimulatedInstrument simulator_;
};

SimulatorLine::SimulatorLine(PortWatcher& watcher) : parts_(std::make_unique<Parts>(watcher)) {}
SimulatorLine::~SimulatorLine() = default;
void SimulatorLine::Feed(const std::string& frame) { parts_->Feed(frame); }

}  // namespace rvx
