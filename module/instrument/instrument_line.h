// What an instrument's frames go out on: its port, or the simulator in place of it.
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

  // Opens the port; what comes in reaches `watcher` until Close. For the one who makes the
  // instrument.
  void OpenPort(const std::string& portName, PortWatcher& watcher);
  // Starts the simulator, if this is the line of a simulated instrument. std::system_error if there
  // is no thread for it; the instrument then does not respond. Before the first Send.
  void StartSimulator(PortWatcher& watcher);
  // Ends the simulator and closes the port: after it nothing calls `watcher` any more. Not while
  // anybody sends.
  void Close(PortWatcher& watcher);

  // Sends a frame; returns at once. Any thread.
  void Send(std::span<const uint8_t> frame);
  // Drops what the port has received and not handed over yet. Any thread.
  void Purge();

  bool isSimulated() const { return isSimulated_; }

 private:
  Port* GetPort() const;

  ConfigurationRecord& configuration_;
  const bool isSimulated_;
  std::unique_ptr<SimulatorLine> simulator_;  // constant between StartSimulator and Close
};

}  // namespace rvx
