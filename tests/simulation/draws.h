// Random draws for one purpose. Every purpose has a separate stream, so that switching off one
// fault leaves all other draws of a seed unchanged.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/random_stream.h"
#include "platform/time_base.h"

namespace rvx::soak {

// Not thread-safe. `purpose` names the stream.
class Draws : public platform::RandomStream {
 public:
  Draws(uint64_t seed, platform::StreamId stream, std::string_view purpose)
      : RandomStream(RandomStream(seed, stream).Part(NumberOf(purpose))) {}

  // 0 to bound - 1.
  int Below(int bound) {
    return static_cast<int>(RandomStream::Below(static_cast<uint32_t>(bound)));
  }
  using RandomStream::LogUniform;
  platform::Milliseconds LogUniform(platform::Milliseconds low, platform::Milliseconds high) {
    return platform::Milliseconds(static_cast<int64_t>(
        LogUniform(static_cast<double>(low.count()), static_cast<double>(high.count()))));
  }

 private:
  static constexpr uint64_t NumberOf(std::string_view purpose) {
    uint64_t number = 0;
    for (const char c : purpose) {
      number = platform::detail::Mix64(number ^ static_cast<uint8_t>(c));
    }
    return number;
  }
};

}  // namespace rvx::soak
