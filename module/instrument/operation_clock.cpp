#include "module/instrument/operation_clock.h"

namespace rvx {

void OperationClock::SetRotorTime(int32_t seconds) {
  platform::PlainGuard guard(rotorTimeLock_);
  rotorTime_ = seconds;
}

bool OperationClock::GetSeconds(const StatusFrame& frame, int32_t& seconds) {
  OperationTimes times;
  {
    const ConfigurationGuard guard(configuration_);
    const TestRecord& test = configuration_.fields.testRecord;
    times.preconditionTime = test.preconditionTime * 60;
    times.sentInjectionTime = test.sentInjectionTime;
    times.coolDownTime = test.coolDownTime;
  }
  {
    platform::PlainGuard guard(rotorTimeLock_);
    times.rotorTime = rotorTime_;
  }
  platform::PlainGuard guard(timerLock_);
  if (frame.sequence < sequence_) return timer_.Read(seconds);
  sequence_ = frame.sequence;
  return timer_.Update(frame.record.intCount(), frame.record.operation(), times, seconds);
}

}  // namespace rvx
