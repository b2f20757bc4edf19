// Who uses an instrument, so that it does not go while somebody does.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace rvx {

class C_RVX;

// Counts the users, and knows the threads that the instrument itself has started. Any thread.
class InstrumentUsers {
 public:
  void Begin();
  // Also forgets the calling thread, if it was noted.
  void End();
  // The calling thread is one of the instrument's own until it calls End.
  void NoteOwnThread();
  bool IsOnOwnThread();
  // Waits until nobody uses the instrument. For the one who destroys it.
  void WaitUntilUnused();

 private:
  platform::PlainLock lock_{"instrument users", platform::kLeafRank};
  int32_t users_ GUARDED_BY(lock_) = 0;
  std::vector<platform::ThreadId> ownThreads_ GUARDED_BY(lock_);
  platform::Event unused_{"instrument: no user left"};
};

// Counts one user for as long as it lives. A thread that works on an instrument counts from before
// its start to its very end, since it may still be ending after its action is gone: whoever starts
// it makes an InstrumentUse and hands it to the thread by std::shared_ptr.
class InstrumentUse {
 public:
  explicit InstrumentUse(C_RVX& instrument);
  ~InstrumentUse() { users_.End(); }
  InstrumentUse(const InstrumentUse&) = delete;
  InstrumentUse& operator=(const InstrumentUse&) = delete;

  // At the start of such a thread.
  void NoteOwnThread() { users_.NoteOwnThread(); }

 private:
  InstrumentUsers& users_;
};

}  // namespace rvx
