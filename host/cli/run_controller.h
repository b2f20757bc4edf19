// Runs the trays of one or more instruments to their end, and obeys the user's keys and signals.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "host/cli/run_view.h"
#include "host/cli/session.h"
#include "host/cli/terminal.h"
#include "host/tray/run_events.h"
#include "host/tray/run_state.h"
#include "platform/interrupt.h"

namespace torvell {

// The main thread only. One Ctrl+C pauses each tray after its present sample, a second one aborts.
// On a terminal a paused tray waits for r (resume) or a (abort); without one nobody could resume
// it, so it is aborted.
class RunController : private ErrorListener {
 public:
  RunController(Session& session, platform::InterruptWatch& interrupts,
                const std::vector<const FoundInstrument*>& instruments);
  ~RunController() override;
  RunController(const RunController&) = delete;
  RunController& operator=(const RunController&) = delete;

  // Runs the present trays from start to end; prints events or progress and a summary.
  ExitCode Run();

 private:
  void Start(size_t run);
  bool AllFinished() const;
  bool AnyPaused() const;
  void WaitForSomething();
  void HandleEvents();
  void Handle(const RunEvent& event);
  void HandlePause(size_t run);
  void HandleInterrupts();
  void HandleKey(char key);
  void Abort(size_t run);
  void AbortAll();
  void ReportFailure(size_t run, const std::string& message);
  void PrintEvent(const RunEvent& event);
  void PrintSummary();
  Json EventJson(const char* name, size_t run) const;
  ExitCode Judge() const;

  // ErrorListener: failures that belong to no instrument, such as a line that broke.
  void ErrorReported(const ErrorReport& report) override;

  Session& session_;
  Output& output_;
  platform::InterruptWatch& interrupts_;
  const bool somebodyIsThere_;
  RunEventQueue queue_;
  RunView view_;
  std::vector<RunState> runs_;
  std::vector<std::unique_ptr<RunRecorder>> recorders_;
  std::vector<std::unique_ptr<TrayRunner>> runners_;
  std::optional<KeyMode> keys_;  // while keys are awaited
  int signalsHandled_ = 0;
  bool pauseAsked_ = false;
  bool interrupted_ = false;  // the user ended the run
};

}  // namespace torvell
