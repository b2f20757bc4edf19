#include "tests/simulation/fault.h"

#include <algorithm>

namespace rvx::soak {
namespace {

constexpr std::array<FaultKind, kFaultCount> kKinds = {{
    {"lost-byte", 1e-6, 1e-2},
    {"flipped-byte", 1e-6, 1e-2},
    {"doubled-byte", 1e-6, 1e-2},
    {"inserted-byte", 1e-6, 1e-2},
    {"gap", 1e-3, 1e-1},
    {"late-reply", 1e-3, 1e-1},
    {"lost-reply", 1e-3, 1e-1},
    {"doubled-reply", 1e-3, 1e-1},
    {"old-reply", 1e-3, 1e-1},
    {"babble", 1e-3, 1e-1},
    {"short-write", 1e-3, 1e-1},
    {"cut-line", 1, 3},
    {"open-fails", 1, 1},
    {"silent", 1, 3},
    {"refuses", 1, 3},
    {"not-ready", 1, 3},
    {"steppers-lost", 1, 2},
    {"goes-idle", 1, 3},
    {"power-cycle", 1, 2},
    {"never-settles", 1, 2},
    {"count-jumps", 1, 4},
    {"count-repeats", 1, 4},
    {"archive-busy", 0.1, 1},
    {"archive-fails", 0.1, 1},
    {"archive-dead", 1, 1},
    {"false-failure", 0.1, 1},
    {"slow-watcher", 1e-2, 0.3},
    {"calling-watcher", 1e-2, 0.3},
    {"slow-user", 0.1, 1},
    {"archive-read-only", 1, 3},
    {"throwing-watcher", 1e-2, 0.3},
    {"clock-jumps", 1, 3},
    {"operator", 1, 10},
    {"second-operator", 1, 10},
    {"destroyed-early", 1, 1},
    {"stalls", 1, 20},
    {"late-wakeups", 1e-3, 1e-1},
    {"spurious-wakeups", 1e-4, 1e-2},
}};

}  // namespace

const FaultKind& KindOf(Fault fault) { return kKinds.at(static_cast<size_t>(fault)); }

std::optional<Fault> FaultByName(std::string_view name) {
  const auto found = std::find_if(kKinds.begin(), kKinds.end(),
                                  [&](const FaultKind& kind) { return kind.name == name; });
  if (found == kKinds.end()) return std::nullopt;
  return static_cast<Fault>(found - kKinds.begin());
}

bool FaultRates::TouchesLine() const {
  return std::any_of(rates_.begin(), rates_.begin() + static_cast<ptrdiff_t>(Fault::ArchiveBusy),
                     [](double rate) { return rate > 0.0; });
}

}  // namespace rvx::soak
