#include "platform/random_stream.h"

#include <cmath>

namespace platform {

// least * (most / least)^u with the bits of u one after the other. The square root is rounded
// exactly on every machine; exp and log are not, and a seed would then mean another run elsewhere.
double RandomStream::LogUniform(double least, double most) {
  constexpr int kBits = 32;
  const uint64_t bits = Next() >> (64 - kBits);
  double factor = most / least;
  double value = least;
  for (int i = kBits - 1; i >= 0; --i) {
    factor = std::sqrt(factor);
    if ((bits >> i & 1) != 0) value *= factor;
  }
  return value;
}

}  // namespace platform
