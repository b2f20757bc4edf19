#include "execution/launch_record.h"

#include <utility>

namespace rvx {

LaunchRecord::LaunchRecord(C_RVX& ownInstrument, CBaseAction* ownAction, ActionWatcher* ownWatcher,
                           std::string ownContext, int ownTray, int ownPosition, bool drives)
    : instrument(ownInstrument),
      context(std::move(ownContext)),
      tray(ownTray),
      position(ownPosition),
      drivesInstrument(drives),
      watcher(ownWatcher),
      action(ownAction) {}

void LaunchRecord::ReportStarted() {
  platform::RecursiveGuard guard(lock);
  if (watcher != nullptr) watcher->ActionStarted(context);
}

void LaunchRecord::ReportStatus(const std::string& text) {
  platform::RecursiveGuard guard(lock);
  if (watcher != nullptr) watcher->ActionStatus(context, text);
}

bool LaunchRecord::IsDetached() {
  platform::RecursiveGuard guard(lock);
  return action == nullptr;
}

}  // namespace rvx
