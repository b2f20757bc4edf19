#include "platform/real_base.h"

#include <sched.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <mutex>

namespace platform::detail {
namespace {

constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;

int64_t SteadyNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

// Read by every thread and written only between programs.
std::atomic<int64_t> clockStart{SteadyNanoseconds()};
std::atomic<int> clockPace{1};

// The moment on the steady clock. Far deadlines are cut to what the system takes.
timespec ToSystemTime(const Deadline& deadline) {
  constexpr int64_t kFarAway = int64_t{1} << 61;
  const int64_t microseconds = deadline.moment().count();
  int64_t moment = clockStart.load(std::memory_order_relaxed);
  // Rounded up: a wait that ended early would have to be repeated.
  const int pace = clockPace.load(std::memory_order_relaxed);
  moment += microseconds > kFarAway / 1000 ? kFarAway : (microseconds * 1000 + pace - 1) / pace;
  if (moment < 0) moment = 0;
  return {moment / kNanosecondsPerSecond, moment % kNanosecondsPerSecond};
}

// Guards all events and waits. One mutex for all is enough: it is held for a few list operations.
// Never destroyed, so that threads may use events while the process ends.
std::mutex& EventMutex() {
  static auto* const mutex = new std::mutex;
  return *mutex;
}

std::mutex freeRecordsMutex;
RealRecord* freeRecords = nullptr;  // guarded by freeRecordsMutex

RealRecord* TakeRecord() {
  const std::lock_guard<std::mutex> guard(freeRecordsMutex);
  if (freeRecords == nullptr) return new RealRecord;
  RealRecord* record = freeRecords;
  freeRecords = record->nextFree;
  return record;
}

void GiveRecordBack(RealRecord* record) {
  record->threadName.clear();
  record->libraryError.clear();
  record->held = {};
  record->id = NextThreadId();  // for the thread that gets it next
  const std::lock_guard<std::mutex> guard(freeRecordsMutex);
  record->nextFree = freeRecords;
  freeRecords = record;
}

bool IsFirstThread() { return syscall(SYS_gettid) == getpid(); }

thread_local RealRecord* currentRecord = nullptr;

// Gives the record back when its thread ends.
struct RecordReturn {
  ~RecordReturn() {
    GiveRecordBack(currentRecord);
    currentRecord = nullptr;
  }
  RecordReturn() = default;
  RecordReturn(const RecordReturn&) = delete;
  RecordReturn& operator=(const RecordReturn&) = delete;
};

RealRecord& MakeCurrentRecord() {
  currentRecord = TakeRecord();
  if (IsFirstThread()) currentRecord->threadName = "main";
  static thread_local RecordReturn giveBack;
  return *currentRecord;
}

// Ends the sleep of the record's thread; the event mutex is held. True if the caller still has to
// post the semaphore.
bool MarkAwake(ThreadRecord& thread) {
  auto& record = static_cast<RealRecord&>(thread);
  if (record.posted) return false;
  record.posted = true;
  return true;
}

// Collects the threads to wake while the event mutex is held, and wakes them. The first one is
// woken after the mutex is released, so that it does not block on it at once. The others, which
// only a manual event has, are woken immediately.
class Waker {
 public:
  void operator()(ThreadRecord& thread) {
    if (!MarkAwake(thread)) return;
    auto* record = static_cast<RealRecord*>(&thread);
    if (first_ == nullptr) {
      first_ = record;
    } else {
      sem_post(&record->wakeUp);
    }
  }
  // The event mutex is free.
  void Finish() {
    if (first_ != nullptr) sem_post(&first_->wakeUp);
  }

 private:
  RealRecord* first_ = nullptr;
};

// Sleeps until somebody posts or the deadline has passed. May wake for nothing: a post may come
// from an earlier wait that ended by its deadline.
void SleepOn(RealRecord& record, const Deadline& deadline) {
  if (deadline.IsNever()) {
    sem_wait(&record.wakeUp);
    return;
  }
  const timespec end = ToSystemTime(deadline);
  sem_clockwait(&record.wakeUp, CLOCK_MONOTONIC, &end);
}

}  // namespace

RealRecord& CurrentRealRecord() {
  return currentRecord != nullptr ? *currentRecord : MakeCurrentRecord();
}

void RestartRealClock(int pace) {
  clockPace = pace;
  clockStart = SteadyNanoseconds();
}

Microseconds RealElapsed() {
  const int64_t elapsed = SteadyNanoseconds() - clockStart.load(std::memory_order_relaxed);
  const int pace = clockPace.load(std::memory_order_relaxed);
  // In two parts: nanoseconds times the pace would wrap after months.
  return Microseconds(elapsed / 1000 * pace + elapsed % 1000 * pace / 1000);
}

int RealPace() { return clockPace.load(std::memory_order_relaxed); }

void AcquireReal(LockState& lock) {
  RealRecord& self = CurrentRealRecord();
  if (lock.owner.load(std::memory_order_relaxed) == &self) {
    if (!lock.recursive) FailTakenTwice(self, lock);
    ++lock.depth;
    return;
  }
#ifndef NDEBUG
  CheckRank(self, lock);
#endif
  lock.mutex.lock();
  lock.owner.store(&self, std::memory_order_relaxed);
  lock.depth = 1;
#ifndef NDEBUG
  self.held.Push(&lock);
#endif
}

void ReleaseReal(LockState& lock) {
  RealRecord& self = CurrentRealRecord();
  if (lock.owner.load(std::memory_order_relaxed) != &self) FailNotHolder(self, lock);
  if (--lock.depth > 0) return;
#ifndef NDEBUG
  self.held.Remove(&lock);
#endif
  lock.owner.store(nullptr, std::memory_order_relaxed);
  lock.mutex.unlock();
}

void SetReal(EventState& event) {
  Waker waker;
  {
    const std::lock_guard<std::mutex> guard(EventMutex());
    event.Signal(waker);
  }
  waker.Finish();
}

void ResetReal(EventState& event) {
  const std::lock_guard<std::mutex> guard(EventMutex());
  event.set = false;
}

bool TryWaitReal(EventState& event) {
  const std::lock_guard<std::mutex> guard(EventMutex());
  return event.Take();
}

bool IsWaitedForReal(EventState& event) {
  const std::lock_guard<std::mutex> guard(EventMutex());
  return event.first != nullptr;
}

int WaitForAnyReal(std::span<EventState* const> events, std::span<WaitNode> nodes,
                   const Deadline& deadline) {
  RealRecord& self = CurrentRealRecord();
  std::unique_lock<std::mutex> guard(EventMutex());
  const int set = TakeFirst(events);
  if (set != kTimedOut || deadline.HasPassed()) return set;
  EventWait wait;
  wait.thread = &self;
  self.posted = false;
  LinkAll(events, nodes, wait);
  do {
    guard.unlock();
    SleepOn(self, deadline);
    guard.lock();
  } while (!wait.granted && !deadline.HasPassed());
  Waker waker;
  const int taken = UnlinkAndTake(events, nodes, waker);
  guard.unlock();
  waker.Finish();
  return taken;
}

void SleepUntilReal(const Deadline& deadline) {
  if (deadline.HasPassed()) {
    sched_yield();
    return;
  }
  const timespec end = ToSystemTime(deadline);
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
  }
}

}  // namespace platform::detail
