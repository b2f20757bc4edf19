#include "module/execution/view_action.h"

#include <memory>
#include <utility>

#include "module/instrument/c_rvx.h"

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

enum class ScreenEnd { Closed, Stopped, InstrumentCloses };

ScreenEnd WaitForEnd(LaunchRecord& record, FrameWindow* frame) {
  const auto wait = [&record](platform::Milliseconds time) {
    return platform::WaitForAny({&record.stopEvent, &record.instrument.closingEvent()},
                                platform::Deadline::After(time));
  };
  int ended = platform::kTimedOut;
  while (ended == platform::kTimedOut && frame != nullptr && frame->Exists()) {
    ended = wait(kLookInterval);
  }
  if (ended == platform::kTimedOut) ended = wait(kLastWait);
  if (ended == 0) return ScreenEnd::Stopped;
  return ended == 1 ? ScreenEnd::InstrumentCloses : ScreenEnd::Closed;
}

}  // namespace

void ViewThread(LaunchRecord& record) {
  record.ReportStarted();
  ScreenCreator creator(record);
  const std::unique_ptr<FrameWindow> frame(ExecutePerformCreation(&creator));
  const ScreenEnd end = WaitForEnd(record, frame.get());
  // The window uses the instrument, which this thread keeps alive: it goes first.
  if (end != ScreenEnd::Closed && frame != nullptr) frame->Destroy();
  // Whoever stopped the action has told its watcher.
  if (end != ScreenEnd::Stopped) CBaseAction::FinishRun(record);
}

CScreenAction::CScreenAction(C_RVX& instrument, int labelId, std::string classKey)
    : CBaseAction(instrument, labelId), classKey_(std::move(classKey)) {}

}  // namespace rvx
