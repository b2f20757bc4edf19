// What the simulated controller receives. A byte from 0xF0 up lets time pass, any other is sent on
// the line.
#include <algorithm>
#include <vector>

#include "fuzz/require.h"
#include "module/protocol/reply_reader.h"
#include "module/protocol/status_record.h"
#include "module/simulator/sim_link.h"
#include "platform/time_base.h"

namespace {

using namespace rvx::simulator;

// The module's own reader reads the controller's frames: the two share no code.
class Module : public SimReceiver, public rvx::FrameHandler {
 public:
  void Receive(std::span<const uint8_t> frame) override {
    ++sent;
    reader_.Feed(frame);
  }
  void FrameReceived(std::span<const uint8_t> frame) override {
    ++understood;
    last = rvx::ClassifyReply(frame);
    fuzz::Require(last == rvx::ReplyKind::SelfTest ||
                      (last == rvx::ReplyKind::Status &&
                       rvx::StatusRecord::FromSimulatorData(rvx::ReplyData(frame)).has_value()),
                  "each reply is a whole status or a self test");
  }
  int sent = 0;
  int understood = 0;
  rvx::ReplyKind last = rvx::ReplyKind::Unknown;

 private:
  rvx::ReplyReader reader_{0, this};
};

// The controller without its threads: time passes where the input says so.
struct Controller {
  Module module;
  SimStopHandle stop{module};
  platform::Event ownStop{"fuzz: board stop"};
  SimBoard board{ownStop, nullptr};
  SimFirmware firmware{board};
  SimLink link{stop, board, firmware};

  void Settle() {
    constexpr int kMaxPasses = 64;
    for (int i = 0; i < kMaxPasses; ++i) {
      const auto intCount = static_cast<uint16_t>(board.AdvanceClock(link.WantsTick()));
      const bool progressed = firmware.Pass(intCount);
      link.StatusPass(intCount);
      if (!progressed) return;
    }
  }
  void LetTimePass(int halfSeconds) {
    for (int i = 0; i < halfSeconds; ++i) {
      platform::Sleep(std::chrono::duration_cast<platform::Milliseconds>(SimBoard::kTick));
      Settle();
    }
  }
};

void Run(std::span<const uint8_t> line) {
  constexpr uint8_t kFirstPause = 0xF0;
  Controller controller;
  for (const uint8_t c : line) {
    if (c < kFirstPause) {
      controller.link.Accept(c);
      continue;
    }
    controller.Settle();
    controller.LetTimePass(1 << ((c - kFirstPause) / 2));
  }
  fuzz::Require(controller.module.sent == controller.module.understood,
                "the module understands every reply");

  controller.link.Accept('\r');
  const int before = controller.module.sent;
  for (const char c : std::string_view("/0QST\r")) controller.link.Accept(static_cast<uint8_t>(c));
  fuzz::Require(
      controller.module.sent == before + 1 && controller.module.last == rvx::ReplyKind::Status,
      "a good query behind any noise gets one status");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  platform::TimeBaseOptions options;
  options.kind = platform::TimeBaseKind::Virtual;
  options.seed = 1;
  options.startOfClock = platform::Date(2026, 1, 5, 8, 0, 0);
  platform::RunUnderTimeBase(options, [&] {
    Run({data, size});
    return 0;
  });
  return 0;
}
