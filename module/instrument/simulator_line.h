// The line to the built-in simulator, in place of a port.
#pragma once

#include <memory>
#include <string>

#include "boundary/host.h"

namespace rvx {
namespace simulator {
class RotorModel;
}

// Owns the simulator. Its replies reach the watcher as a port's bytes do, on a thread of the
// simulator.
class SimulatorLine {
 public:
  // `watcher` is not owned; after the destructor it is not called any more. A null `rotorModel`
  // means the default one.
  SimulatorLine(PortWatcher& watcher, std::unique_ptr<simulator::RotorModel> rotorModel);
  ~SimulatorLine();
  SimulatorLine(const SimulatorLine&) = delete;
  SimulatorLine& operator=(const SimulatorLine&) = delete;

  // Hands over a whole request frame; returns at once.
  void Feed(const std::string& frame);

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace rvx
