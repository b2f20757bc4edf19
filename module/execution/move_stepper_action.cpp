#include "module/execution/move_stepper_action.h"

#include <utility>

#include "module/execution/context.h"
#include "module/execution/move_state_machine.h"
#include "module/execution/sequencer_thread.h"

namespace rvx {
namespace {

constexpr int kLabelId = 605;

}  // namespace

CMoveStepperAction::CMoveStepperAction(C_RVX& instrument) : CBaseAction(instrument, kLabelId) {}

void CMoveStepperAction::Start(ActionWatcher* watcher, const std::string& context) {
  StartFailure failure = StartFailure::BadContext;
  const auto place = ParseContext(context);
  if (place && IsTrayPlace(instrument(), *place)) {
    platform::RecursiveGuard guard(lock_);
    failure = Launch(watcher, context, place->tray, place->position, "move",
                     platform::ThreadPriority::Normal, SequencerThread<CMSStateMachine>);
  }
  if (failure == StartFailure::None) return;
  ActionErrorRecord record = instrument().MakeErrorRecord();
  record.sampleFailure = 1;
  if (place) {
    record.tray = place->tray;
    record.position = place->position;
  }
  if (failure == StartFailure::NoThread) record.kind = 1;
  Raise(std::move(record), failure);
}

}  // namespace rvx
