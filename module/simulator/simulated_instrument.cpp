#include "module/simulator/simulated_instrument.h"

#include <utility>

namespace rvx::simulator {
namespace {

// A sequence settles in a few passes; the longest, the search for the speed of a precondition,
// takes about thirty. Only phases of no length could repeat for ever: then the machines pause for a
// millisecond at a time, like any controller.
constexpr int kMaxPassesAtOnce = 64;
constexpr platform::Milliseconds kPassPause{1};

}  // namespace

SimulatedInstrument::SimulatedInstrument(SimStopHandle& stop, bool simulate,
                                         std::unique_ptr<RotorModel> rotorModel)
    : stop_(stop) {
  if (!simulate) return;
  board_ = std::make_unique<SimBoard>(ownStop_, std::move(rotorModel));
  firmware_ = std::make_unique<SimFirmware>(*board_);
  link_ = std::make_unique<SimLink>(stop_, *board_, *firmware_);
  boardThread_ = platform::StartThread("simulator board", [this] { board_->Run(); });
  try {
    mainThread_ = platform::StartThread("simulator", [this] { RunMain(); });
  } catch (...) {
    ownStop_.Set();
    boardThread_->Join();
    throw;
  }
}

SimulatedInstrument::~SimulatedInstrument() {
  stop_.RequestStop();
  if (mainThread_) mainThread_->Join();
  if (boardThread_) boardThread_->Join();
}

void SimulatedInstrument::Feed(const std::string& text) {
  if (!mainThread_) return;
  {
    platform::PlainGuard guard(inputLock_);
    input_ += text;
  }
  inputEvent_.Set();
}

// Runs the machines until nothing changes any more at this moment. Returns the moment of the next
// pass that is due without an input or the end of a move.
platform::Deadline SimulatedInstrument::Settle() {
  for (int passes = 0; passes < kMaxPassesAtOnce; ++passes) {
    const auto intCount = static_cast<uint16_t>(board_->AdvanceClock(link_->WantsTick()));
    const bool progressed = firmware_->Pass(intCount);
    link_->StatusPass(intCount);
    if (progressed) continue;
    return link_->WantsTick() ? platform::Deadline::At(board_->NextTick())
                              : platform::Deadline::Never();
  }
  return platform::Deadline::After(kPassPause);
}

// Takes all input that has come, before the machines run again. False if there was none.
bool SimulatedInstrument::ServeInput() {
  taken_.clear();
  {
    platform::PlainGuard guard(inputLock_);
    taken_.swap(input_);  // both keep their memory
  }
  for (const char c : taken_) link_->Accept(static_cast<uint8_t>(c));
  return !taken_.empty();
}

void SimulatedInstrument::RunMain() {
  int woken = 0;
  do {
    // First does what was due before the input came, so that the input meets an up-to-date state.
    platform::Deadline nextPass = Settle();
    if (ServeInput()) nextPass = Settle();
    woken = platform::WaitForAny({&stop_.event(), &inputEvent_, &board_->moveEnded()}, nextPass);
  } while (woken != 0);
  ownStop_.Set();
}

}  // namespace rvx::simulator
