// Small deterministic mixing of 64-bit numbers, the same on every machine and compiler (the
// finaliser of the SplitMix64 generator).
#pragma once

#include <cstdint>

namespace platform::detail {

inline constexpr uint64_t kGoldenGamma = 0x9E3779B97F4A7C15ULL;

// A bijection whose results look unrelated for neighbouring arguments.
constexpr uint64_t Mix64(uint64_t value) {
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
  return value ^ (value >> 31);
}

// Stream of numbers from a seed. Streams of neighbouring seeds are unrelated, since the seed is
// mixed before it becomes the state.
class SplitMix {
 public:
  explicit constexpr SplitMix(uint64_t seed) : state_(Mix64(seed + kGoldenGamma)) {}
  constexpr uint64_t Next() { return Mix64(state_ += kGoldenGamma); }
  // 0 to bound - 1, bound at least 1. The bias of the multiplication is below 2^-32.
  constexpr uint32_t Below(uint32_t bound) {
    return static_cast<uint32_t>(((Next() >> 32) * bound) >> 32);
  }

 private:
  uint64_t state_;
};

}  // namespace platform::detail
