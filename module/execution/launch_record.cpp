#include "module/execution/launch_record.h"

#include <utility>

#include "module/instrument/watcher_call.h"

namespace rvx {

LaunchRecord::LaunchRecord(C_RVX& ownInstrument, CBaseAction* ownAction, ActionWatcher* ownWatcher,
                           std::string ownContext, int ownTray, int ownPosition, RunKind ownKind)
    : instrument(ownInstrument),
      context(std::move(ownContext)),
      tray(ownTray),
      position(ownPosition),
      kind(ownKind),
      watcher(ownWatcher),
      action(ownAction) {}

void LaunchRecord::ReportStarted() {
  platform::RecursiveGuard guard(lock);
  ActionWatcher* const called = watcher;
  if (called == nullptr) return;
  CallWatcher(&instrument, "ActionStarted", [&] { called->ActionStarted(context); });
}

void LaunchRecord::ReportStatus(const std::string& text) {
  platform::RecursiveGuard guard(lock);
  ActionWatcher* const called = watcher;
  if (called == nullptr) return;
  CallWatcher(&instrument, "ActionStatus", [&] { called->ActionStatus(context, text); });
}

bool LaunchRecord::IsDetached() {
  platform::RecursiveGuard guard(lock);
  return action == nullptr;
}

}  // namespace rvx
