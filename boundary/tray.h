// The tray: one action for each position, and who watches its run.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "boundary/action.h"
#include "platform/lock.h"

namespace rvx {

// Is told about a tray's run, always with tray number 0 and positions from 0. Called from the
// module's threads, one call at a time; it may call the instrument's tray operations from inside,
// but must not destroy the instrument there. An exception that leaves a call is reported, and the
// run goes on.
class TrayWatcher {
 public:
  virtual void TrayStarted(int32_t tray) = 0;
  // Exactly once for each StartTray that did not throw; nothing is called after it. The tray is
  // empty by then, and the next run may be started from inside.
  virtual void TrayFinished(int32_t tray) = 0;
  virtual void TrayPauseChanged(int32_t tray, int32_t paused) = 0;
  virtual void SampleStarted(int32_t tray, int32_t position) = 0;
  // `text` names the operation that has begun, for people.
  virtual void SampleStatus(int32_t tray, int32_t position, std::string text) = 0;
  virtual void SampleFinished(int32_t tray, int32_t position) = 0;
  virtual ~TrayWatcher() = default;
};

// The actions of a tray, one for each position, never null; the instrument owns it. The actions are
// shared: one that is still in use outlives its removal, so that none is stopped or destroyed while
// the tray's lock is held (the end of a running action may need locks that are taken before the
// tray's). Any thread. All operations require the lock to be held, which is recursive; a host holds
// it for a copy and calls neither actions nor the instrument under it.
class CAPABILITY("mutex") TrayOfSampleActions {
 public:
  // `rank`: the place of the lock in the order of locks of the instrument that has the tray.
  explicit TrayOfSampleActions(platform::LockRank rank) : lock_("tray", rank) {}
  virtual ~TrayOfSampleActions() = default;
  virtual void Lock() ACQUIRE() { lock_.Lock(); }
  virtual void Unlock() RELEASE() { lock_.Unlock(); }

  int32_t GetSize() const { return static_cast<int32_t>(actions_.size()); }
  // The action of a position from 0 to GetSize() - 1, owned by the tray.
  Action* GetAt(int32_t position) const { return actions_.at(static_cast<size_t>(position)).get(); }
  // The same, kept alive by the returned pointer.
  std::shared_ptr<Action> Hold(int32_t position) const {
    return actions_.at(static_cast<size_t>(position));
  }
  // Puts an action, which the tray then owns, into a position. Returns the one that was there:
  // release the lock, then stop and drop that one.
  [[nodiscard]] std::shared_ptr<Action> Replace(int32_t position, std::shared_ptr<Action> action) {
    return std::exchange(actions_.at(static_cast<size_t>(position)), std::move(action));
  }
  // Puts a whole new list into the tray; returns the old one, to be treated as in Replace.
  [[nodiscard]] std::vector<std::shared_ptr<Action>> ReplaceAll(
      std::vector<std::shared_ptr<Action>> actions) {
    return std::exchange(actions_, std::move(actions));
  }

 private:
  platform::RecursiveLock lock_;
  std::vector<std::shared_ptr<Action>> actions_;
};
using TrayGuard = platform::LockGuard<TrayOfSampleActions>;

}  // namespace rvx
