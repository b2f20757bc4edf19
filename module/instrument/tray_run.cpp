#include "module/instrument/tray_run.h"

#include <optional>

#include "platform/text.h"

namespace rvx {
namespace {

// The position of a context "tray,position" of the first tray; nothing for another tray.
std::optional<int32_t> PositionOfFirstTray(const std::string& context) {
  const size_t comma = context.find(',');
  if (comma == std::string::npos) return std::nullopt;
  if (platform::ParseLeadingInt(context.substr(0, comma)) >= 1) return std::nullopt;
  return platform::ParseLeadingInt(context.substr(comma + 1));
}

}  // namespace

CActionWatcher::~CActionWatcher() {
  if (started_.TryWait()) finished_.Wait();
}

// The watcher is called with the TrayRun's lock held: this ensures that no call follows
// TrayFinished. The lock is recursive and has a lower rank than every lock that a watcher may take.
void CActionWatcher::ActionStarted(std::string context) {
  started_.Set();
  const std::optional<int32_t> position = PositionOfFirstTray(context);
  platform::RecursiveGuard guard(run_.lock);
  if (position) run_.Tell("SampleStarted", &TrayWatcher::SampleStarted, 0, *position);
}

void CActionWatcher::ActionStatus(std::string context, std::string text) {
  const std::optional<int32_t> position = PositionOfFirstTray(context);
  platform::RecursiveGuard guard(run_.lock);
  if (position) {
    run_.Tell("SampleStatus", &TrayWatcher::SampleStatus, 0, *position, std::move(text));
  }
}

void CActionWatcher::ActionFinished(std::string /*context*/) { finished_.Set(); }

}  // namespace rvx
