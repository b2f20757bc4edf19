#include "module/execution/view_action.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>

#include "module/execution/context.h"
#include "module/execution/screen_failure.h"
#include "module/instrument/access_check.h"
#include "module/instrument/c_rvx.h"

namespace rvx {
namespace {

// How often it is checked that a screen is still open. A frame does not report that its window was
// closed, so this is one of the few places that poll; it costs nothing while no screen is open.
constexpr platform::Milliseconds kLookInterval{150};
constexpr platform::Milliseconds kLastWait{100};

// People count trays and positions from 1.
int32_t CountFromOne(int number) {
  return number == std::numeric_limits<int>::max() ? number : number + 1;
}

// Creates the screen on the user-interface thread, with no lock held: a screen that asks the user
// something while it is made would otherwise block every thread that stops its action.
class ScreenCreator final : public UserInterfaceClient {
 public:
  // The maker does not use the action, which may have been stopped and deleted by then.
  ScreenCreator(LaunchRecord& record, const ScreenMaker& maker, const std::string& label)
      : record_(record), maker_(maker), label_(label) {}
  // An exception that left this would end the process, so it lets none pass. It puts the frame into
  // the record here and not after the call: the window's thread may need the frame at once. So the
  // record owns the handle, and the caller, who would own what is returned, gets none.
  FrameWindow* PerformCreation() override {
    if (record_.IsDetached()) return nullptr;
    try {
      const std::shared_ptr<FrameWindow> frame(
          maker_({record_.instrument,
                  label_,
                  record_.motion,
                  {record_.shared_from_this(), &record_.stopEvent}}));
      platform::RecursiveGuard guard(record_.lock);
      record_.frame = frame;
    } catch (...) {
      record_.motion.End();
      ReportScreenFailure(&record_.instrument, label_, DescribeRaised());
    }
    return nullptr;
  }
  int32_t LoadResources() override { return 0; }

 private:
  LaunchRecord& record_;
  const ScreenMaker& maker_;
  const std::string& label_;  // the screen refers to it too
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

// `label` outlives the screen, which refers to it.
void WatchScreen(LaunchRecord& record, const ScreenMaker& maker, const std::string& label) {
  record.ReportStarted();
  ScreenCreator creator(record, maker, label);
  ExecutePerformCreation(&creator);
  std::shared_ptr<FrameWindow> frame;
  {
    platform::RecursiveGuard guard(record.lock);
    frame = record.frame;
  }
  const ScreenEnd end = WaitForEnd(record, frame.get());
  if (end == ScreenEnd::InstrumentCloses) record.motion.End();
  // The window uses the instrument, which this thread keeps alive, so it is destroyed first.
  if (end != ScreenEnd::Closed && frame != nullptr) frame->Destroy();
  // A stop has already told the watcher.
  if (end != ScreenEnd::Stopped) CBaseAction::FinishRun(record);
}

}  // namespace

CScreenAction::CScreenAction(C_RVX& instrument, ActionIndex index, int labelId,
                             std::string classKey)
    : CBaseAction(instrument, labelId), index_(index), classKey_(std::move(classKey)) {}

void CScreenAction::Start(ActionWatcher* watcher, const std::string& context) {
  ActionErrorRecord record = instrument().MakeErrorRecord();
  if (const ScreenMaker maker = GetScreenMaker(index_)) {
    RequireServiceRight();
    StartFailure failure;
    {
      platform::RecursiveGuard guard(lock_);
      if (const auto place = ParseContext(context)) {
        record.tray = tray_ = CountFromOne(place->tray);
        record.position = position_ = CountFromOne(place->position);
      }
      // Screens are not urgent: measuring threads take precedence.
      failure = Launch(
          watcher, context, tray_, position_, "screen", platform::ThreadPriority::Lowest,
          [maker, label = GetLabel()](LaunchRecord& launch) { WatchScreen(launch, maker, label); },
          RunKind::Screen);
    }
    if (failure != StartFailure::None) Raise(std::move(record), failure);
    return;
  }
  record.message =
      "\"" + GetLabel() +
      (HasScreens() ? "\" has no screen in this version yet. Nothing was opened or changed."
                    : "\" can't be opened, because the program runs without a display. Nothing was "
                      "changed. Open it from the program's window.");
  throw new ActionException(std::move(record));
}

void CScreenAction::RequireServiceRight() {
  const auto* const end = std::end(kServiceActions);
  if (std::find(std::begin(kServiceActions), end, index_) == end) return;
  const auto refusal = FindLevelRefusal(kLevelOperator, "Opening \"" + GetLabel() + "\"");
  if (!refusal) return;
  ActionErrorRecord record = instrument().MakeErrorRecord();
  record.message = *refusal;
  throw new ActionException(std::move(record));
}

int32_t CScreenAction::Edit() {
  const InstrumentUse use(instrument());  // the editor may show a dialog
  const ActionEditor editor = GetActionEditor(index_);
  return editor ? editor(instrument()) : CBaseAction::Edit();
}

ScreenAction::Use CScreenAction::GetUse() {
  if (GetScreenMaker(index_)) return Use::Start;
  return GetActionEditor(index_) ? Use::Edit : Use::None;
}

std::string CScreenAction::GetCloseRefusal() {
  std::shared_ptr<LaunchRecord> launch;
  {
    platform::RecursiveGuard guard(lock_);
    launch = launch_;
  }
  if (launch == nullptr) return std::string();
  std::shared_ptr<FrameWindow> frame;
  {
    platform::RecursiveGuard guard(launch->lock);
    frame = launch->frame;
  }
  if (frame == nullptr) return std::string();
  try {
    return frame->GetCloseRefusal();
  } catch (...) {
    // The host asks from the toolkit's own code, which an exception must not pass.
    ReportScreenFailure(&instrument(), GetLabel(), DescribeRaised());
    frame->Destroy();
  }
  return std::string();
}

}  // namespace rvx
