// An open port: what the port manager hands out.
#pragma once

#include <string>

#include "boundary/host.h"
#include "host/core/listener_list.h"

namespace torvell {

// Hands what it receives to its watchers. Any thread.
class OpenLine : public rvx::Port {
 public:
  void AddWatcher(rvx::PortWatcher* watcher) { watchers_.Add(watcher); }
  // After the return the watcher is not called any more. Waits for a call in progress, except from
  // inside that call.
  void RemoveWatcher(rvx::PortWatcher* watcher) { watchers_.Remove(watcher); }
  bool HasWatchers() { return !watchers_.IsEmpty(); }

  // Starts to release the device and returns at once. Called once, when no watcher is left.
  virtual void Shut() = 0;
  // Waits until the device is free again. Returns at once on the line's own thread.
  virtual void WaitShut() = 0;

 protected:
  ListenerList<rvx::PortWatcher> watchers_;
};

// A line without a device: drops what is written, and receives nothing.
class EmptyLine : public OpenLine {
 public:
  void Write(std::span<const uint8_t>) override {}
  void Purge() override {}
  void Shut() override {}
  void WaitShut() override {}
};

}  // namespace torvell
