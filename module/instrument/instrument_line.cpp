#include "module/instrument/instrument_line.h"

#include "module/instrument/simulated_oils.h"

namespace rvx {

void InstrumentLine::OpenPort(const std::string& portName, PortWatcher& watcher) {
  Port* port = GetPortManager()->OpenPort(portName, &watcher);
  const ConfigurationGuard guard(configuration_);
  configuration_.fields.port = port;
}

void InstrumentLine::StartSimulator(PortWatcher& watcher) {
  if (isSimulated_) simulator_ = std::make_unique<SimulatorLine>(watcher, MakeStoredRotor());
}

void InstrumentLine::Close(PortWatcher& watcher) {
  std::string portName;
  {
    const ConfigurationGuard guard(configuration_);
    configuration_.fields.port = nullptr;
    portName = configuration_.fields.portName;
  }
  simulator_.reset();
  GetPortManager()->ClosePort(portName, &watcher);
}

void InstrumentLine::Send(std::span<const uint8_t> frame) {
  if (isSimulated_) {
    if (simulator_) simulator_->Feed(std::string(frame.begin(), frame.end()));
    return;
  }
  if (Port* port = GetPort()) port->Write(frame);
}

void InstrumentLine::Purge() {
  if (Port* port = GetPort()) port->Purge();
}

Port* InstrumentLine::GetPort() const {
  const ConfigurationGuard guard(configuration_);
  return configuration_.fields.port;
}

}  // namespace rvx
