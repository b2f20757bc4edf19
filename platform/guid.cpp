#include "platform/guid.h"

#include <sys/random.h>

#include <atomic>
#include <cerrno>
#include <cstring>

#include "platform/fatal.h"
#include "platform/mix.h"

namespace platform {
namespace {

std::atomic<bool> seeded{false};
std::atomic<uint64_t> seedState{0};
std::atomic<uint64_t> seededCount{0};

void FillFromSystem(Guid& guid) {
  size_t filled = 0;
  while (filled < guid.size()) {
    const ssize_t count = getrandom(guid.data() + filled, guid.size() - filled, 0);
    if (count > 0) {
      filled += static_cast<size_t>(count);
    } else if (errno != EINTR) {
      // An identifier that repeats would overwrite a stored result.
      detail::Fatal("the system gives no random numbers");
    }
  }
}

void FillFromSeed(Guid& guid) {
  const uint64_t number = seededCount.fetch_add(1, std::memory_order_relaxed);
  const uint64_t base = detail::Mix64(seedState.load() + 2 * number * detail::kGoldenGamma);
  const uint64_t halves[2] = {base, detail::Mix64(base ^ detail::Mix64(number + 1))};
  std::memcpy(guid.data(), halves, guid.size());
}

}  // namespace

Guid CreateGuid() {
  Guid guid{};
  if (seeded.load()) {
    FillFromSeed(guid);
  } else {
    FillFromSystem(guid);
  }
  guid[6] = static_cast<uint8_t>((guid[6] & 0x0F) | 0x40);  // version 4
  guid[8] = static_cast<uint8_t>((guid[8] & 0x3F) | 0x80);  // the usual variant
  return guid;
}

void SeedGuids(uint64_t seed, uint64_t stream) {
  seedState = detail::Mix64(detail::Mix64(seed) + detail::kGoldenGamma * (stream + 1));
  seededCount = 0;
  seeded = true;
}

std::string FormatGuid(const Guid& guid) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(36);
  for (size_t i = 0; i < guid.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[guid[i] >> 4];
    text += kDigits[guid[i] & 0x0F];
  }
  return text;
}

}  // namespace platform
