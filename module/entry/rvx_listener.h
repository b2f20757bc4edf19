// Listens to a port while discovery tries its addresses.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "boundary/host.h"
#include "module/protocol/identification.h"
#include "platform/lock.h"

namespace rvx {

// Lives for the trial of one port.
class RVXListener : public PortWatcher {
 public:
  // The address under trial from now on; what was found before is forgotten. Discovery's thread.
  void Try(uint8_t address);
  // The identification text that has arrived for the address under trial, if any. It may have been
  // sent by an instrument that was tried earlier and answered late: its address is what counts.
  std::optional<std::string> Found();
  // Port's thread.
  void Receive(std::span<const uint8_t> bytes) override;

 private:
  platform::PlainLock lock_{"discovery listener", platform::kLeafRank};
  uint8_t address_ GUARDED_BY(lock_) = 0;
  std::optional<std::string> reply_ GUARDED_BY(lock_);
  IdentificationListener listener_;  // only the port's thread
};

}  // namespace rvx
