#include "module/execution/null_action.h"

#include "module/instrument/watcher_call.h"

namespace rvx {

void CNullAction::Start(ActionWatcher* watcher, const std::string& context) {
  {
    // Before the calls: the watcher may destroy the action from inside.
    platform::RecursiveGuard guard(lock_);
    hasRun_ = 1;
  }
  if (watcher == nullptr) return;
  CallWatcher(nullptr, "ActionStarted", [&] { watcher->ActionStarted(context); });
  CallWatcher(nullptr, "ActionFinished", [&] { watcher->ActionFinished(context); });
}

int32_t CNullAction::HasRun() {
  platform::RecursiveGuard guard(lock_);
  return hasRun_;
}

std::string CNullAction::GetSampleId() {
  platform::RecursiveGuard guard(lock_);
  return text_;
}

void CNullAction::SetSampleId(const std::string& text) {
  platform::RecursiveGuard guard(lock_);
  text_ = text;
}

}  // namespace rvx
