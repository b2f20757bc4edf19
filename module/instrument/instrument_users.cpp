#include "module/instrument/instrument_users.h"

#include <algorithm>

#include "module/instrument/c_rvx.h"

namespace rvx {

void InstrumentUsers::Begin() {
  platform::PlainGuard guard(lock_);
  ++users_;
}

void InstrumentUsers::End() {
  // Set under the lock: after the unlock the waiting destructor may destroy the event.
  platform::PlainGuard guard(lock_);
  std::erase(ownThreads_, platform::CurrentThreadId());
  if (--users_ == 0) unused_.Set();
}

void InstrumentUsers::NoteOwnThread() {
  platform::PlainGuard guard(lock_);
  ownThreads_.push_back(platform::CurrentThreadId());
}

bool InstrumentUsers::IsOnOwnThread() {
  platform::PlainGuard guard(lock_);
  const platform::ThreadId here = platform::CurrentThreadId();
  return std::find(ownThreads_.begin(), ownThreads_.end(), here) != ownThreads_.end();
}

void InstrumentUsers::WaitUntilUnused() {
  for (;;) {
    {
      platform::PlainGuard guard(lock_);
      if (users_ == 0) return;
    }
    unused_.Wait();
  }
}

InstrumentUse::InstrumentUse(C_RVX& instrument) : users_(instrument.users()) { users_.Begin(); }

}  // namespace rvx
