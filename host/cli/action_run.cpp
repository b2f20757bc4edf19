#include "host/cli/action_run.h"

#include <fmt/format.h>

#include <memory>

#include "host/cli/failure.h"
#include "platform/interrupt.h"

namespace torvell {

namespace {

// Shows what the action does.
class Watcher : public rvx::ActionWatcher {
 public:
  explicit Watcher(Output& output) : output_(output) {}
  void ActionStarted(std::string) override {}
  void ActionStatus(std::string, std::string text) override { output_.Progress(text); }
  void ActionFinished(std::string) override { finished_.Set(); }
  platform::Event& finished() { return finished_; }

 private:
  Output& output_;
  platform::Event finished_{"service action finished", platform::Event::Mode::ManualReset};
};

// Counts and shows the failures that are reported during its lifetime.
class FailureCounter : private ErrorListener {
 public:
  FailureCounter(ErrorStore& errors, Output& output)
      : errors_(errors), output_(output), lock_("failure counter", platform::kLeafRank) {
    errors_.AddListener(this);
  }
  ~FailureCounter() override { errors_.RemoveListener(this); }
  FailureCounter(const FailureCounter&) = delete;
  FailureCounter& operator=(const FailureCounter&) = delete;

  int count() {
    const platform::PlainGuard guard(lock_);
    return count_;
  }

 private:
  void ErrorReported(const ErrorReport& report) override {
    output_.Error(report.message);
    const platform::PlainGuard guard(lock_);
    ++count_;
  }

  ErrorStore& errors_;
  Output& output_;
  platform::PlainLock lock_;
  int count_ GUARDED_BY(lock_) = 0;
};

}  // namespace

ExitCode RunAction(Session& session, const FoundInstrument& found, int32_t index,
                   const std::string& context) {
  platform::InterruptWatch interrupts;
  FailureCounter failures(session.host().errors(), session.output());
  Watcher watcher(session.output());
  // Declared after the watcher: the action may call the watcher until it is destroyed.
  std::unique_ptr<rvx::Action> action;
  try {
    action.reset(found.instrument->CreateActionByIndex(index));
    action->Start(&watcher, context);
  } catch (rvx::CViscoException* error) {
    ThrowFromModule(error, "Starting the action");
  }
  bool interrupted = false;
  while (platform::WaitForAny({&watcher.finished(), &interrupts.event()},
                              platform::Deadline::Never()) != 0) {
    interrupted = true;
    action->Stop();
  }
  if (interrupted) return ExitCode::Interrupted;
  return failures.count() > 0 ? ExitCode::RunFailed : ExitCode::Good;
}

}  // namespace torvell
