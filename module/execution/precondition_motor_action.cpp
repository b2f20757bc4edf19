#include "module/execution/precondition_motor_action.h"

#include <utility>

#include "module/execution/precondition_state_machine.h"
#include "module/execution/sequencer_thread.h"

namespace rvx {
namespace {

constexpr int kLabelId = 606;

}  // namespace

CPreconditionMotorAction::CPreconditionMotorAction(C_RVX& instrument)
    : CBaseAction(instrument, kLabelId) {}

void CPreconditionMotorAction::Start(ActionWatcher* watcher, const std::string& context) {
  StartFailure failure;
  {
    platform::RecursiveGuard guard(lock_);
    failure = Launch(watcher, context, 0, 0, "motor precondition", platform::ThreadPriority::Normal,
                     SequencerThread<CPMStateMachine>);
  }
  if (failure == StartFailure::None) return;
  ActionErrorRecord record = instrument().MakeErrorRecord();
  record.sampleFailure = 1;
  if (failure == StartFailure::NoThread) record.kind = 1;
  Raise(std::move(record), failure);
}

}  // namespace rvx
