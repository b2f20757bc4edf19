// The line that carries an instrument's frames: its port, or the simulator in place of the port.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "boundary/host.h"
#include "module/instrument/configuration_record.h"
#include "module/instrument/simulator_line.h"

namespace rvx {

// The host keeps the port open for a simulated instrument too, but sends nothing on it.
class InstrumentLine {
 public:
  // `configuration` keeps the open port; not owned, must outlive this.
  InstrumentLine(ConfigurationRecord& configuration, bool isSimulated)
      : configuration_(configuration), isSimulated_(isSimulated) {}

  // Opens the port; received bytes go to `watcher` until Close. Called in the construction of the
  // instrument.
  void OpenPort(const std::string& portName, PortWatcher& watcher);
  // Starts the simulator, if this is the line of a simulated instrument. Throws std::system_error
  // if no thread can be started for it; the instrument then does not respond. Call it before the
  // first Send.
  void StartSimulator(PortWatcher& watcher);
  // Ends the simulator and closes the port: after it nothing calls `watcher` any more. No other
  // thread may be in Send.
  void Close(PortWatcher& watcher);

  // Sends a frame; returns at once. Any thread.
  void Send(std::span<const uint8_t> frame);
  // Drops what the port has received and not yet passed on. Any thread.
  void Purge();

  bool isSimulated() const { return isSimulated_; }

 private:
  Port* GetPort() const;

  ConfigurationRecord& configuration_;
  const bool isSimulated_;
  std::unique_ptr<SimulatorLine> simulator_;  // constant between StartSimulator and Close
};

}  // namespace rvx
