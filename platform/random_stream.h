// Random numbers that a seed decides, the same on every machine and with every compiler. Each kind
// of chance in a run has a stream of its own, so that one can be switched off while the others draw
// the same numbers as before.
#pragma once

#include <cstdint>

#include "platform/mix.h"

namespace platform {

// What a stream decides. The numbers are part of what a seed means: add new ones at the end.
enum class StreamId : uint32_t {
  Schedule = 0,         // who runs next
  Stalls = 1,           // threads that are held up
  LateWakeUps = 2,      // jumps of time that go too far
  SpuriousWakeUps = 3,  // waits that wake for nothing
  Options = 4,          // what DrawTimeBaseOptions chooses
  Line = 5,             // faults of a serial line
  Instrument = 6,       // faults of a controller
  Archive = 7,          // faults of the host's archive and of its watchers
  Operator = 8,         // what a person does, and when
  Scenario = 9          // what is run: samples, times, oils
};

// A stream of numbers. One thread at a time may use it.
class RandomStream {
 public:
  // Neighbouring seeds and the streams of one seed are unrelated.
  constexpr RandomStream(uint64_t seed, StreamId stream)
      : RandomStream(detail::Mix64(seed + detail::kGoldenGamma) ^
                     detail::Mix64(static_cast<uint64_t>(stream))) {}

  // A stream of its own for a part, by a number that the caller chooses (the kind of a fault, an
  // instrument). It does not draw from this stream, so it is the same whatever this stream drew
  // before.
  constexpr RandomStream Part(uint64_t number) const {
    return RandomStream(detail::Mix64(origin_ + detail::kGoldenGamma * (2 * number + 1)));
  }

  constexpr uint64_t Next() { return detail::Mix64(state_ += detail::kGoldenGamma); }

  // 0 to bound - 1, bound at least 1. The bias of the multiplication is below 2^-32.
  constexpr uint32_t Below(uint32_t bound) {
    return static_cast<uint32_t>(((Next() >> 32) * bound) >> 32);
  }

  // From least to most, both included.
  constexpr int Between(int least, int most) {
    return least + static_cast<int>(Below(static_cast<uint32_t>(most - least) + 1));
  }

  // True once in n times, n at least 1.
  constexpr bool OneIn(uint32_t n) { return Below(n) == 0; }

  // 0 to below 1.
  constexpr double Unit() { return static_cast<double>(Next() >> 11) * 0x1p-53; }

  // True with probability p: never for 0, always for 1.
  constexpr bool Chance(double p) { return Unit() < p; }

  // From `least` to `most`, 0 < least <= most: each octave in between is as likely as any other.
  double LogUniform(double least, double most);

 private:
  explicit constexpr RandomStream(uint64_t origin) : origin_(origin), state_(origin) {}

  uint64_t origin_;
  uint64_t state_;
};

}  // namespace platform
