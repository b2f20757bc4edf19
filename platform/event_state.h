// How events and waits meet, the same under every base. The caller provides the exclusion: the
// real base holds its event mutex, under the virtual base only one task runs.
//
// A Set on an event that somebody waits for is granted to that wait, first come first; only without
// a wait to take it does the event stay set. So two Sets wake two waiters even if neither has run
// in between, and a Reset just after a Set takes nothing back. A thread that wakes looks at its
// events in the order given, and gives a grant back if an earlier event is set too.
#pragma once

#include <cstddef>
#include <span>

#include "platform/event.h"
#include "platform/thread_record.h"

namespace platform {

namespace detail {

struct EventWait;

// One event of one wait, linked into that event's list. Lives on the waiting thread's stack.
struct WaitNode {
  WaitNode* previous = nullptr;
  WaitNode* next = nullptr;
  EventWait* wait = nullptr;
  bool granted = false;
};

// One wait of one thread.
struct EventWait {
  ThreadRecord* thread = nullptr;
  bool granted = false;  // one of its nodes is
};

}  // namespace detail

class EventState {
 public:
  EventState(const char* eventName, Event::Mode mode)
      : name(eventName), autoReset(mode == Event::Mode::AutoReset) {}

  const char* const name;
  const bool autoReset;
  bool set = false;
  detail::WaitNode* first = nullptr;
  detail::WaitNode* last = nullptr;

  // True if set; clears an auto-reset event.
  bool Take() {
    const bool wasSet = set;
    if (autoReset) set = false;
    return wasSet;
  }

  // Sets the event, and calls wake(thread) for each wait that this ends.
  template <class Wake>
  void Signal(Wake&& wake) {
    if (!autoReset) set = true;
    for (detail::WaitNode* node = first; node != nullptr; node = node->next) {
      if (node->wait->granted) continue;
      node->granted = true;
      node->wait->granted = true;
      wake(*node->wait->thread);
      if (autoReset) return;
    }
    set = true;
  }

  void Link(detail::WaitNode& node) {
    node.previous = last;
    node.next = nullptr;
    (last != nullptr ? last->next : first) = &node;
    last = &node;
  }

  void Unlink(detail::WaitNode& node) {
    (node.previous != nullptr ? node.previous->next : first) = node.next;
    (node.next != nullptr ? node.next->previous : last) = node.previous;
  }
};

namespace detail {

// Index of the first event that is set, which is taken; or kTimedOut.
inline int TakeFirst(std::span<EventState* const> events) {
  for (size_t i = 0; i < events.size(); ++i) {
    if (events[i]->Take()) return static_cast<int>(i);
  }
  return kTimedOut;
}

inline void LinkAll(std::span<EventState* const> events, std::span<WaitNode> nodes,
                    EventWait& wait) {
  for (size_t i = 0; i < events.size(); ++i) {
    nodes[i].wait = &wait;
    events[i]->Link(nodes[i]);
  }
}

// Ends a wait: takes the first event that was granted to it or is set, and gives back a grant that
// it does not use. Its index, or kTimedOut.
template <class Wake>
int UnlinkAndTake(std::span<EventState* const> events, std::span<WaitNode> nodes, Wake&& wake) {
  for (size_t i = 0; i < events.size(); ++i) events[i]->Unlink(nodes[i]);
  int taken = kTimedOut;
  for (size_t i = 0; i < events.size(); ++i) {
    if (taken == kTimedOut) {
      if (nodes[i].granted || events[i]->Take()) taken = static_cast<int>(i);
    } else if (nodes[i].granted && events[i]->autoReset) {
      events[i]->Signal(wake);
    }
  }
  return taken;
}

}  // namespace detail
}  // namespace platform
