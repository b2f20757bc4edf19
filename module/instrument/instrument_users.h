// The users of an instrument, so that it is not destroyed while it is in use.
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
  // Marks the calling thread as one of the instrument's own until it calls End.
  void NoteOwnThread();
  bool IsOnOwnThread();
  // Waits until nobody uses the instrument. Called by its destructor.
  void WaitUntilUnused();

 private:
  platform::PlainLock lock_{"instrument users", platform::kLeafRank};
  int32_t users_ GUARDED_BY(lock_) = 0;
  std::vector<platform::ThreadId> ownThreads_ GUARDED_BY(lock_);
  platform::Event unused_{"instrument: no user left"};
};

// Counts one user during its lifetime. A thread that works on an instrument is counted from before
// its start to its very end, since it may outlive its action: the code that starts it makes an
// InstrumentUse and passes it to the thread by std::shared_ptr.
class InstrumentUse {
 public:
  explicit InstrumentUse(C_RVX& instrument);
  ~InstrumentUse() { users_.End(); }
  InstrumentUse(const InstrumentUse&) = delete;
  InstrumentUse& operator=(const InstrumentUse&) = delete;

  // Call it at the start of such a thread.
  void NoteOwnThread() { users_.NoteOwnThread(); }

 private:
  InstrumentUsers& users_;
};

}  // namespace rvx
