// Listens to a port while discovery tries its addresses.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "boundary/host.h"
#include "module/protocol/identification.h"
#include "platform/lock.h"

namespace rvx {

// One object for each port that is tried.
class RVXListener : public PortWatcher {
 public:
  // Sets the address that is tried from now on, and forgets what was found before. Discovery's
  // thread.
  void Try(uint8_t address);
  // The identification text that has arrived from the address that is tried, if any. Late replies
  // from addresses that were tried earlier are ignored.
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
