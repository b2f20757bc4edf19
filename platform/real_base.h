// Locks, events and the clock with the system's own threads: the real base, and the paced one,
// which differs in its clock only.
#pragma once

#include <semaphore.h>

#include <span>

#include "platform/event_state.h"
#include "platform/lock_state.h"
#include "platform/time_base.h"

namespace platform::detail {

// A thread of the system, with what it sleeps on. Records are used again and never freed: a thread
// is woken after the event mutex is released, when it may already have ended.
struct RealRecord : ThreadRecord {
  RealRecord() { sem_init(&wakeUp, 0, 0); }
  sem_t wakeUp;
  bool posted = false;  // a wake-up is on its way; guarded by the event mutex
  RealRecord* nextFree = nullptr;
};

// The calling thread's record.
RealRecord& CurrentRealRecord();

// Starts the clock again at 0, with durations divided by `pace`.
void RestartRealClock(int pace);
// Time since then, in the base's time.
Microseconds RealElapsed();
int RealPace();

void AcquireReal(LockState& lock);
void ReleaseReal(LockState& lock);

void SetReal(EventState& event);
void ResetReal(EventState& event);
bool TryWaitReal(EventState& event);
bool IsWaitedForReal(EventState& event);
int WaitForAnyReal(std::span<EventState* const> events, std::span<WaitNode> nodes,
                   const Deadline& deadline);
void SleepUntilReal(const Deadline& deadline);

}  // namespace platform::detail
