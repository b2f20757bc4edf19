// What the tray thread does: precondition, the positions in order, the move back.
#pragma once

#include <memory>
#include <string>

#include "module/instrument/tray_controller.h"

namespace rvx {

// One run of a tray. Lives on the tray thread.
class TrayThread {
 public:
  TrayThread(TrayController& controller, std::shared_ptr<TrayRun> run)
      : controller_(controller), instrument_(controller.instrument_), run_(std::move(run)) {}

  void Run();

 private:
  // How the waiting for an action ended.
  enum class Wait { Finished, PauseNow, Aborted };
  // How the start of an action went.
  enum class StartResult {
    Started,
    NotReady,    // reported, and the tray is asked to pause at once
    GoOn,        // failed; after a pause if it was a failure that a person can mend
    LeaveStage,  // failed with a computer or instrument failure: the stage is given up
    Aborted
  };

  bool HasFilledPosition();
  void PromptForCheckStandard();
  // The first and the last stage: an action that belongs to no position, started anew after each
  // pause. Returns false if the run was aborted.
  bool RunOwnAction(int actionIndex, platform::Milliseconds sleepBefore);
  bool RunPositions();
  void Finish();

  // Starts `action` with `context` if the instrument is ready; else requests the pause and reports
  // the failure for `errorTray` and `errorPosition`.
  StartResult StartAction(Action& action, CActionWatcher& watcher, const std::string& context,
                          int32_t errorTray, int32_t errorPosition);
  StartResult HandleStartFailure(CViscoException* failure);
  Wait WaitForAction(CActionWatcher& watcher);
  // Shows the tray as paused until a resume. Returns false if the run was aborted.
  bool PauseBlock();
  // Returns false if an abort came first.
  bool SleepUnlessAborted(platform::Milliseconds duration);
  bool IsReady();
  bool OnlyEmptyBehind(int32_t position);
  std::shared_ptr<Action> HoldPosition(int32_t position);
  // Call the watcher, if it is still there, under the TrayRun's lock.
  void TellPause(bool paused);
  void TellSampleFinished(int32_t position);

  TrayController& controller_;
  C_RVX& instrument_;  // kept alive by the thread's InstrumentUse
  std::shared_ptr<TrayRun> run_;
};

}  // namespace rvx
