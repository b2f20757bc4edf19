// A simulated instrument at the end of a line that records its frames, under virtual time.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "module/simulator/simulated_instrument.h"
#include "platform/event.h"
#include "platform/time_base.h"

namespace rvx::simulator {

inline void UnderVirtualTime(const std::function<void()>& body, uint64_t seed = 1) {
  platform::TimeBaseOptions options;
  options.kind = platform::TimeBaseKind::Virtual;
  options.seed = seed;
  platform::RunUnderTimeBase(options, [&] {
    body();
    return 0;
  });
}

// One reply frame with the time at which it came. The functions read the fields of a status frame.
struct Heard {
  std::string text;  // with its CR
  int64_t ms = 0;    // since the line was made

  uint8_t Byte(size_t index) const {
    return static_cast<uint8_t>(std::stoi(text.substr(5 + 2 * index, 2), nullptr, 16));
  }
  int Word(size_t index) const { return Byte(index) + 256 * Byte(index + 1); }
  int intCount() const { return Word(0); }
  int actual() const { return Word(2); }
  int target() const { return Word(4); }
  int speed() const { return Word(10); }
  int machineStatus() const { return Byte(12); }
  int switches() const { return Byte(13); }
  int operation() const { return Byte(14); }
  int error() const { return Byte(16); }
  std::string tag() const {
    return Word(17) == 0 ? std::string()
                         : std::string{static_cast<char>(Byte(18)), static_cast<char>(Byte(17))};
  }
};

// Records the simulator's frames. The simulator's thread and the test's thread use it.
class SimLine : public SimReceiver {
 public:
  SimLine() : start_(platform::MonotonicTime()) {}

  void Receive(std::span<const uint8_t> frame) override {
    const Heard heard{std::string(frame.begin(), frame.end()), Now()};
    std::function<void(const Heard&)> onFrame;
    {
      platform::PlainGuard guard(lock_);
      heard_.push_back(heard);
      onFrame = onFrame_;
    }
    came_.Set();
    if (onFrame) onFrame(heard);
  }
  // Called with each frame from now on, on the simulator's thread, which waits for it.
  void SetOnFrame(std::function<void(const Heard&)> onFrame) {
    platform::PlainGuard guard(lock_);
    onFrame_ = std::move(onFrame);
  }

  // Milliseconds since the line was made.
  int64_t Now() const { return (platform::MonotonicTime() - start_) / platform::Milliseconds(1); }

  // Takes the next frame, and waits for it if necessary. The text is empty if none comes for a
  // second; under the real clock, where the machine may be busy, for a minute.
  Heard Next() {
    const bool real = platform::CurrentTimeBase() == platform::TimeBaseKind::Real;
    const platform::Deadline deadline =
        platform::Deadline::After(platform::Milliseconds(real ? 60000 : 1000));
    for (;;) {
      {
        platform::PlainGuard guard(lock_);
        if (taken_ < heard_.size()) return heard_[taken_++];
      }
      if (!came_.Wait(deadline)) return {};
    }
  }

  // Takes all frames that have come and have not been taken.
  std::vector<Heard> Rest() {
    platform::PlainGuard guard(lock_);
    std::vector<Heard> rest(heard_.begin() + static_cast<std::ptrdiff_t>(taken_), heard_.end());
    taken_ = heard_.size();
    return rest;
  }

 private:
  const platform::Microseconds start_;
  platform::PlainLock lock_{"test line", platform::kLeafRank};
  std::vector<Heard> heard_ GUARDED_BY(lock_);
  size_t taken_ GUARDED_BY(lock_) = 0;
  std::function<void(const Heard&)> onFrame_ GUARDED_BY(lock_);
  platform::Event came_{"test line"};
};

// A line and its simulator. Made inside UnderVirtualTime; the simulator's clock starts with it.
struct SimSet {
  SimLine line;
  SimStopHandle stop{line};
  SimulatedInstrument instrument{stop};

  void Send(const std::string& command) { instrument.Feed("/0" + command + "\r"); }
  Heard Ask(const std::string& command) {
    Send(command);
    return line.Next();
  }
  Heard Status() { return Ask("QST"); }
  void Home() { EXPECT_EQ(Ask("CHO").error(), 0); }
  void WaitMs(int64_t ms) { platform::Sleep(platform::Milliseconds(ms)); }
  // Sleeps until the given time of the line.
  void WaitUntil(int64_t ms) { WaitMs(ms - line.Now()); }
  // Milliseconds until `done` holds for a status, which is requested every `step` milliseconds; a
  // round of the drive takes five. Fails the test after a minute.
  int64_t TimeUntil(const std::function<bool(const Heard&)>& done, int64_t step = 5) {
    constexpr int64_t kLimit = 60000;
    const int64_t begin = line.Now();
    while (!done(Status())) {
      if (line.Now() - begin > kLimit) {
        ADD_FAILURE() << "not within " << kLimit << " ms";
        break;
      }
      WaitMs(step);
    }
    return line.Now() - begin;
  }
};

inline std::string HexByte(int value) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  return {kDigits[value >> 4 & 15], kDigits[value & 15]};
}
inline std::string HexWord(int value) { return HexByte(value >> 8) + HexByte(value); }

}  // namespace rvx::simulator
