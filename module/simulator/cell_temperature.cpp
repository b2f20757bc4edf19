#include "module/simulator/cell_temperature.h"

namespace rvx::simulator {
namespace {

constexpr int kFastCounts = 80;  // counts a step far from the target, and what counts as far
constexpr int kSlowCounts = 2;
constexpr int kMaxCellCounts = 65520;  // the converter's range, with some room at both ends
constexpr int kMinCellCounts = 16;

int StepCell(int actual, int target) {
  if (actual < target) {
    if (actual > kMaxCellCounts) return kMaxCellCounts;
    return actual + (target - actual > kFastCounts ? kFastCounts : kSlowCounts);
  }
  if (actual < kMinCellCounts) return kMinCellCounts;
  if (actual > target) return actual - (actual - target > kFastCounts ? kFastCounts : kSlowCounts);
  return actual;
}

}  // namespace

uint16_t AdvanceCell(uint16_t actual, uint16_t target, int64_t steps) {
  int now = actual;
  for (; steps > 0; --steps) {
    const int next = StepCell(now, target);
    // At rest, or swinging between two values, only the parity of the remaining steps matters.
    if (StepCell(next, target) == now) return static_cast<uint16_t>(steps % 2 == 0 ? now : next);
    now = next;
  }
  return static_cast<uint16_t>(now);
}

}  // namespace rvx::simulator
