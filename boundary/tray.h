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

// Hears of a tray's run, always with tray number 0. Called from the module's threads; it may call
// the instrument's tray operations from inside, but must not destroy the instrument there.
class TrayWatcher {
 public:
  virtual void TrayStarted(int32_t tray) = 0;
  virtual void TrayFinished(int32_t tray) = 0;
  virtual void TrayPauseChanged(int32_t tray, int32_t paused) = 0;
  virtual void SampleStarted(int32_t tray, int32_t position) = 0;
  virtual void SampleStatus(int32_t tray, int32_t position, std::string text) = 0;
  virtual void SampleFinished(int32_t tray, int32_t position) = 0;
  virtual ~TrayWatcher() = default;
};

// The rank of the tray's lock in the module's table of locks (module/instrument/lock_ranks.h).
inline constexpr platform::LockRank kTrayLockRank = 600;

// The actions of a tray, one a position, never null. Shares them: an action that somebody still
// uses outlives its removal, so that nobody stops or destroys an action while the tray's lock is
// held (a running action's end may need locks that are taken before the tray's). All operations
// want the lock held.
class CAPABILITY("mutex") TrayOfSampleActions {
 public:
  TrayOfSampleActions() : lock_("tray", kTrayLockRank) {}
  virtual ~TrayOfSampleActions() = default;
  virtual void Lock() ACQUIRE() { lock_.Lock(); }
  virtual void Unlock() RELEASE() { lock_.Unlock(); }

  int32_t GetSize() const { return static_cast<int32_t>(actions_.size()); }
  // The action of a position from 0 to GetSize() - 1, owned by the tray.
  Action* GetAt(int32_t position) const { return actions_.at(static_cast<size_t>(position)).get(); }
  // The same, kept alive by the holder.
  std::shared_ptr<Action> Hold(int32_t position) const {
    return actions_.at(static_cast<size_t>(position));
  }
  // Puts an action, now the tray's, into a position. The action that stood there comes back: let go
  // of the lock, then Stop it and drop it.
  [[nodiscard]] std::shared_ptr<Action> Replace(int32_t position, std::shared_ptr<Action> action) {
    return std::exchange(actions_.at(static_cast<size_t>(position)), std::move(action));
  }
  // Puts a whole new list into the tray; the old one comes back as from Replace.
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
