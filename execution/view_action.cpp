#include "execution/view_action.h"

#include <utility>

#include "instrument/c_rvx.h"

namespace rvx {
namespace {

// How often a screen is looked at. A frame says nothing when its window goes, so this is one of the
// few places that ask again and again; it costs nothing while no screen is open.
constexpr platform::Milliseconds kLookInterval{150};
constexpr platform::Milliseconds kLastWait{100};

// Creates the screen on the user-interface thread. It takes the record's lock there and not on the
// view thread: a stop on the user-interface thread waits for that lock, and if the view thread held
// it while waiting for that same thread, neither would go on.
class ScreenCreator final : public UserInterfaceClient {
 public:
  explicit ScreenCreator(LaunchRecord& record) : record_(record) {}
  FrameWindow* PerformCreation() override {
    platform::RecursiveGuard guard(record_.lock);
    return record_.action != nullptr ? record_.action->PerformCreation() : nullptr;
  }
  int32_t LoadResources() override { return 0; }

 private:
  LaunchRecord& record_;
};

bool WaitForStop(LaunchRecord& record, FrameWindow* frame) {
  while (frame != nullptr && frame->Exists()) {
    if (record.stopEvent.Wait(kLookInterval)) return true;
  }
  return record.stopEvent.Wait(kLastWait);
}

}  // namespace

void ViewThread(LaunchRecord& record) {
  record.ReportStarted();
  ScreenCreator creator(record);
  FrameWindow* frame = ExecutePerformCreation(&creator);
  if (WaitForStop(record, frame)) {
    if (frame != nullptr) frame->Destroy();
    return;
  }
  CBaseAction::FinishRun(record);
}

CScreenAction::CScreenAction(C_RVX& instrument, int labelId, std::string classKey)
    : CBaseAction(instrument, labelId), classKey_(std::move(classKey)) {}

}  // namespace rvx
