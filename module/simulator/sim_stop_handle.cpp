#include "module/simulator/sim_stop_handle.h"

namespace rvx::simulator {

SimStopHandle::SimStopHandle(SimReceiver& receiver) : receiver_(receiver) {}

void SimStopHandle::RequestStop() {
  {
    platform::PlainGuard guard(lock_);
    stopped_ = true;
  }
  event_.Set();
}

void SimStopHandle::Deliver(std::span<const uint8_t> frame) {
  // Held over the call on purpose: this is what lets RequestStop promise that no frame is being
  // delivered to an instrument that is being destroyed.
  platform::PlainGuard guard(lock_);
  if (!stopped_) receiver_.Receive(frame);
}

}  // namespace rvx::simulator
