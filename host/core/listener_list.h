// A list of listeners that may be added and removed at any time, also from inside a call.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "host/core/lock_ranks.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace torvell {

// The listeners are not owned. They are called without a lock held, in the order of registration.
// Any thread.
template <class Listener>
class ListenerList {
 public:
  void Add(Listener* listener) {
    auto entry = std::make_shared<Entry>(listener);
    platform::PlainGuard guard(lock_);
    entries_.push_back(std::move(entry));
  }

  // After the return the listener is not called any more. Waits for a call in progress on another
  // thread, so do not hold a lock that the listener takes. From inside a call of the listener
  // itself it returns at once.
  void Remove(Listener* listener) {
    std::shared_ptr<Entry> entry;
    {
      platform::PlainGuard guard(lock_);
      auto found = std::find_if(entries_.begin(), entries_.end(),
                                [&](const auto& each) { return each->listener == listener; });
      if (found == entries_.end()) return;
      entry = *found;
      entries_.erase(found);
      entry->removed = true;
    }
    for (;;) {
      {
        platform::PlainGuard guard(lock_);
        if (!IsBusyElsewhere(*entry)) return;
      }
      entry->quiet.Wait();
    }
  }

  bool IsEmpty() {
    platform::PlainGuard guard(lock_);
    return entries_.empty();
  }

  // Calls `call` with each listener.
  template <class Call>
  void ForEach(const Call& call) {
    std::vector<std::shared_ptr<Entry>> present;
    {
      platform::PlainGuard guard(lock_);
      present = entries_;
    }
    for (const auto& entry : present) {
      if (!Enter(*entry)) continue;
      const Visit visit{*this, *entry};
      call(*entry->listener);
    }
  }

 private:
  struct Entry {
    explicit Entry(Listener* theListener) : listener(theListener) {}
    Listener* const listener;
    // The list's lock guards the following fields, except the event.
    bool removed = false;
    std::vector<platform::ThreadId> callers;     // threads inside a call, with repeats
    platform::Event quiet{"listener is quiet"};  // a call of a removed listener has ended
  };

  // Ends the call also when it throws.
  struct Visit {
    ListenerList& list;
    Entry& entry;
    ~Visit() { list.Leave(entry); }
  };

  bool Enter(Entry& entry) {
    platform::PlainGuard guard(lock_);
    if (entry.removed) return false;
    entry.callers.push_back(platform::CurrentThreadId());
    return true;
  }

  void Leave(Entry& entry) {
    platform::PlainGuard guard(lock_);
    entry.callers.erase(
        std::find(entry.callers.begin(), entry.callers.end(), platform::CurrentThreadId()));
    if (entry.removed) entry.quiet.Set();
  }

  bool IsBusyElsewhere(const Entry& entry) const REQUIRES(lock_) {
    const platform::ThreadId self = platform::CurrentThreadId();
    return std::any_of(entry.callers.begin(), entry.callers.end(),
                       [&](platform::ThreadId caller) { return caller != self; });
  }

  platform::PlainLock lock_{"listeners", kListenersLockRank};
  std::vector<std::shared_ptr<Entry>> entries_ GUARDED_BY(lock_);
};

}  // namespace torvell
