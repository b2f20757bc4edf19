// An open port: what the port manager hands out.
#pragma once

#include <string>

#include "boundary/host.h"
#include "host/core/listener_list.h"

namespace torvell {

// Any thread.
class OpenLine : public rvx::Port {
 public:
  void AddWatcher(rvx::PortWatcher* watcher) { watchers_.Add(watcher); }
  // Once it returns the watcher is not called any more; waits for a call in progress unless it
  // comes from inside that call.
  void RemoveWatcher(rvx::PortWatcher* watcher) { watchers_.Remove(watcher); }
  bool HasWatchers() { return !watchers_.IsEmpty(); }

  // Lets go of the device. Called once, without a watcher left; returns at once.
  virtual void Shut() = 0;
  // Waits until the device is free again. At once on the line's own thread.
  virtual void WaitShut() = 0;

 protected:
  ListenerList<rvx::PortWatcher> watchers_;
};

// A line with nobody at the other end: what is written is gone, nothing is received.
class EmptyLine : public OpenLine {
 public:
  void Write(std::span<const uint8_t>) override {}
  void Purge() override {}
  void Shut() override {}
  void WaitShut() override {}
};

}  // namespace torvell
