#include "module/instrument/operation_timer.h"

namespace rvx {
namespace {

// Operations of one group share their running time: the count goes on from one operation to the
// next.
enum class Group {
  None,
  AdjustCurrent,
  SeekSpeed,
  Precondition,
  Moves,
  Injection,
  Equilibration,
  RunTest
};

Group GroupOf(uint8_t operation) {
  switch (operation) {
    case 1:
      return Group::AdjustCurrent;
    case 2:
      return Group::SeekSpeed;
    case 3:
      return Group::Precondition;
    case 4:
    case 5:
    case 6:
    case 7:
    case 11:
      return Group::Moves;
    case 8:
    case 9:
    case 10:
      return Group::Injection;
    case 12:
      return Group::Equilibration;
    case 13:
      return Group::RunTest;
    default:
      return Group::None;
  }
}

bool CountsDown(Group group) {
  return group == Group::Precondition || group == Group::Injection ||
         group == Group::Equilibration || group == Group::RunTest;
}

int32_t FirstSeconds(Group group, const OperationTimes& times) {
  switch (group) {
    case Group::Precondition:
      return times.preconditionTime - 1;
    case Group::Injection:
      return times.sentInjectionTime - 1;
    case Group::Equilibration:
      return times.coolDownTime - 1;
    case Group::RunTest:
      return times.rotorTime;
    case Group::None:
    case Group::AdjustCurrent:
    case Group::SeekSpeed:
    case Group::Moves:
      return 0;
  }
  return 0;
}

}  // namespace

bool OperationTimer::Update(uint16_t intCount, uint8_t operation, const OperationTimes& times,
                            int32_t& seconds) {
  const bool sameSecond = lastCount_ != 0 && static_cast<uint16_t>(intCount - lastCount_) < 2;
  if (!sameSecond) {
    const Group group = GroupOf(operation);
    down_ = CountsDown(group);
    if (group == Group::None) {
      seconds_ = 0;
      lastOperation_ = 0;
    } else {
      seconds_ = GroupOf(lastOperation_) == group ? seconds_ + (down_ ? -1 : 1)
                                                  : FirstSeconds(group, times);
      lastOperation_ = operation;
    }
    lastCount_ = intCount;
  }
  return Read(seconds);
}

bool OperationTimer::Read(int32_t& seconds) const {
  seconds = seconds_;
  return down_;
}

}  // namespace rvx
