// The thread of an action that consists of one sequencer.
#pragma once

#include "module/execution/base_action.h"
#include "module/execution/sequencer.h"
#include "module/instrument/c_rvx.h"

namespace rvx {

// Runs a Machine, made from the record, to its end. A failure is reported to the host; the action
// counts as ended all the same.
template <class Machine>
void SequencerThread(LaunchRecord& record) {
  record.ReportStarted();
  try {
    Machine machine(record);
    if (RunSequencer(machine, record) == SequencerEnd::Stopped) {
      // The stop has detached the action and told the watcher.
      machine.AbortRun();
      return;
    }
  } catch (CViscoException* failure) {
    C_RVX::ReportError(failure->GetRecord());
    delete failure;
  }
  CBaseAction::FinishRun(record);
}

}  // namespace rvx
