// A complete controller in software. It takes request frames in place of a serial port and sends
// reply frames, so that everything above the line runs without an instrument.
#pragma once

#include <memory>
#include <string>

#include "module/simulator/rotor_model.h"
#include "module/simulator/sim_board.h"
#include "module/simulator/sim_firmware.h"
#include "module/simulator/sim_link.h"
#include "module/simulator/sim_stop_handle.h"
#include "platform/annotations.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace rvx::simulator {

class SimulatedInstrument {
 public:
  // Builds the controller and starts its two threads. With `simulate` false nothing is built or
  // started, and input is dropped. `stop` must outlive this object. A null `rotorModel` means
  // SteadyRotor. Throws std::system_error when the system has no thread left; then nothing keeps
  // running.
  explicit SimulatedInstrument(SimStopHandle& stop, bool simulate = true,
                               std::unique_ptr<RotorModel> rotorModel = nullptr);

  // Requests the stop if nobody has, and waits for both threads. Not to be called from inside
  // SimReceiver::Receive, nor with a lock held that a receiver takes.
  ~SimulatedInstrument();

  SimulatedInstrument(const SimulatedInstrument&) = delete;
  SimulatedInstrument& operator=(const SimulatedInstrument&) = delete;

  // Hands over characters of the line, as a rule one whole request frame, and returns at once. Any
  // thread may call it. The reply comes through the stop handle's receiver.
  void Feed(const std::string& text) EXCLUDES(inputLock_);

 private:
  void RunMain();
  platform::Deadline Settle();
  bool ServeInput() EXCLUDES(inputLock_);

  SimStopHandle& stop_;
  platform::Event ownStop_{
      "simulator own stop"};  // set by the main thread at its end, for the board
  platform::Event inputEvent_{"simulator input"};

  platform::PlainLock inputLock_{"simulator input", platform::kLeafRank};
  std::string input_ GUARDED_BY(inputLock_);

  // Main thread only: input that it has taken.
  std::string taken_;

  // Constant after construction; null when nothing is simulated.
  std::unique_ptr<SimBoard> board_;
  std::unique_ptr<SimFirmware> firmware_;
  std::unique_ptr<SimLink> link_;
  std::shared_ptr<platform::Thread> boardThread_;
  std::shared_ptr<platform::Thread> mainThread_;
};

}  // namespace rvx::simulator
