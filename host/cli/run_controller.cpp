#include "host/cli/run_controller.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/cli/json_records.h"
#include "host/cli/sample_table.h"

namespace torvell {

namespace {

// How long a key is waited for before the program looks at its events again.
constexpr int kKeyPollMilliseconds = 100;

RunView::Mode ChooseMode(const Output& output) {
  if (output.quiet()) return RunView::Mode::None;
  return CanRedraw() && !output.json() ? RunView::Mode::Live : RunView::Mode::Lines;
}

}  // namespace

RunController::RunController(Session& session, platform::InterruptWatch& interrupts,
                             const std::vector<const FoundInstrument*>& instruments)
    : session_(session),
      output_(session.output()),
      interrupts_(interrupts),
      somebodyIsThere_(SomebodyIsThere()),
      view_(output_, ChooseMode(output_)) {
  for (const FoundInstrument* found : instruments) runs_.emplace_back(*found, ReadTray(*found));
  session_.prompter().SetQuestionHook([this](bool aside) { view_.StepAside(aside); });
  session_.host().errors().AddListener(this);
}

RunController::~RunController() {
  // If Run ended by an exception, no tray may go on without anybody watching it.
  if (!AllFinished()) AbortAll();
  runners_.clear();
  session_.host().errors().RemoveListener(this);
  session_.prompter().SetQuestionHook(nullptr);
}

ExitCode RunController::Run() {
  for (size_t run = 0; run < runs_.size(); ++run) Start(run);
  while (!AllFinished()) {
    WaitForSomething();
    HandleInterrupts();
    HandleEvents();
    view_.Refresh(runs_);
  }
  keys_.reset();
  runners_.clear();
  HandleEvents();
  view_.Finish(runs_);
  PrintSummary();
  return Judge();
}

void RunController::Start(size_t run) {
  recorders_.push_back(std::make_unique<RunRecorder>(queue_, run));
  try {
    runners_.push_back(session_.host().StartTray(runs_[run].entry(), recorders_[run].get()));
  } catch (const HostError& error) {
    if (error.kind() != HostErrorKind::Tray) throw;
    runners_.push_back(nullptr);
    runs_[run].MarkFinished();
    ReportFailure(run, error.what());
  }
}

bool RunController::AllFinished() const {
  return std::all_of(runs_.begin(), runs_.end(),
                     [](const RunState& run) { return run.finished(); });
}

bool RunController::AnyPaused() const {
  return std::any_of(runs_.begin(), runs_.end(), [](const RunState& run) { return run.paused(); });
}

void RunController::WaitForSomething() {
  platform::Deadline deadline = platform::Deadline::Never();
  if (const auto refresh = view_.RefreshInterval()) deadline = platform::Deadline::After(*refresh);
  if (AnyPaused() && somebodyIsThere_ && !session_.prompter().IsAsking()) {
    if (!keys_) keys_.emplace();
    if (const auto key = WaitForKey(kKeyPollMilliseconds)) HandleKey(*key);
    deadline = platform::Deadline::After(platform::Milliseconds(1));
  } else {
    keys_.reset();
  }
  platform::WaitForAny({&queue_.event(), &interrupts_.event()}, deadline);
}

void RunController::HandleEvents() {
  for (const RunEvent& event : queue_.TakeAll()) Handle(event);
}

void RunController::Handle(const RunEvent& event) {
  if (!runs_[event.run].Take(event)) return;
  PrintEvent(event);
  view_.Show(event, runs_);
  if (event.kind == RunEvent::Kind::Error) {
    const std::string& message = event.error->message;
    view_.Message((IsFailure(*event.error) ? "error: " : "note: ") + message);
  }
  if (event.kind == RunEvent::Kind::PauseChanged && event.paused) HandlePause(event.run);
}

void RunController::HandlePause(size_t run) {
  if (somebodyIsThere_) {
    view_.Message(fmt::format("{} is paused: press r to resume, a to abort",
                              runs_[run].entry().identity.portName));
    return;
  }
  if (pauseAsked_) {
    view_.Message("interrupted: the tray ends here, behind its present sample");
    interrupted_ = true;
  } else {
    view_.Message(
        "error: the tray has paused and there is no terminal to resume it from: it is "
        "aborted. Load the rest of the tray and run again once the cause is away.");
  }
  Abort(run);
}

void RunController::HandleInterrupts() {
  const int signals = interrupts_.count() - signalsHandled_;
  if (signals <= 0) return;
  const bool allPaused = std::all_of(runs_.begin(), runs_.end(), [](const RunState& run) {
    return run.finished() || run.paused();
  });
  signalsHandled_ += signals;
  if (pauseAsked_ || signals > 1 || allPaused) {
    interrupted_ = true;
    view_.Message("aborting");
    AbortAll();
    return;
  }
  pauseAsked_ = true;
  view_.Message(somebodyIsThere_
                    ? "pausing behind the present sample; Ctrl+C again aborts"
                    : "ending behind the present sample; another signal aborts at once");
  for (const auto& runner : runners_) {
    if (runner) runner->PauseAfterSample();
  }
}

void RunController::HandleKey(char key) {
  if (key != 'r' && key != 'a') return;
  for (size_t run = 0; run < runs_.size(); ++run) {
    if (!runs_[run].paused() || !runners_[run]) continue;
    if (key == 'r') {
      pauseAsked_ = false;
      runners_[run]->Resume();
    } else {
      interrupted_ = true;
      Abort(run);
    }
  }
}

void RunController::Abort(size_t run) {
  if (!runners_[run] || runs_[run].finished()) return;
  const ConsolePrompter::YesScope yes(session_.prompter());
  if (runners_[run]->Abort()) runs_[run].MarkAborted();
}

void RunController::AbortAll() {
  session_.prompter().Dismiss();
  for (size_t run = 0; run < runners_.size(); ++run) Abort(run);
}

void RunController::ReportFailure(size_t run, const std::string& message) {
  RunEvent event;
  event.run = run;
  event.kind = RunEvent::Kind::Error;
  ErrorReport report;
  report.time = platform::LocalNow();
  report.kind = 1;
  report.source = runs_[run].entry().identity.portName;
  report.message = message;
  event.error = report;
  queue_.Push(std::move(event));
}

void RunController::ErrorReported(const ErrorReport& report) {
  if (report.instrument != nullptr) return;  // its run reports it
  RunEvent event;
  event.kind = RunEvent::Kind::Error;
  event.error = report;
  for (size_t run = 0; run < runs_.size(); ++run) {
    if (report.source.find(runs_[run].entry().identity.portName) != std::string::npos) {
      event.run = run;
    }
  }
  queue_.Push(std::move(event));
}

Json RunController::EventJson(const char* name, size_t run) const {
  Json object = {{"event", name}};
  if (runs_.size() > 1) object["instrument"] = runs_[run].entry().identity.portName;
  return object;
}

void RunController::PrintEvent(const RunEvent& event) {
  if (!output_.json()) return;
  Json object;
  switch (event.kind) {
    case RunEvent::Kind::TrayStarted:
      object = EventJson("trayStarted", event.run);
      break;
    case RunEvent::Kind::SampleStarted:
      object = EventJson("sampleStarted", event.run);
      object["position"] = event.position;
      break;
    case RunEvent::Kind::Status:
      object = EventJson("status", event.run);
      object["position"] = event.position;
      object["text"] = event.text;
      break;
    case RunEvent::Kind::Sample:
      object = EventJson("sample", event.run);
      object.update(SampleJson(*event.sample));
      break;
    case RunEvent::Kind::SampleFinished:
      object = EventJson("sampleFinished", event.run);
      object["position"] = event.position;
      break;
    case RunEvent::Kind::PauseChanged:
      object = EventJson("pauseChanged", event.run);
      object["paused"] = event.paused;
      break;
    case RunEvent::Kind::Error:
      object = EventJson("error", event.run);
      object["kind"] = event.error->kind;
      object["message"] = event.error->message;
      object["tray"] = event.error->tray;
      object["position"] = event.error->position;
      object["sampleId"] = event.error->sampleId;
      break;
    case RunEvent::Kind::TrayFinished:
      object = EventJson("trayFinished", event.run);
      break;
  }
  output_.Line(object);
}

void RunController::PrintSummary() {
  SampleTable table;
  for (size_t run = 0; run < runs_.size(); ++run) {
    const RunState& state = runs_[run];
    if (output_.json()) {
      Json object = EventJson("summary", run);
      object["samples"] = state.samples();
      object["errors"] = state.errors();
      object["aborted"] = state.aborted();
      output_.Line(object);
      continue;
    }
    for (const RunPosition& position : state.positions()) {
      for (const StoredSample& sample : position.samples) table.Add(sample);
    }
    output_.Progress(fmt::format("{}: {} of {} samples, {} errors{}", state.entry().Title(),
                                 state.samples(), state.SamplesDue(), state.errors(),
                                 state.aborted() ? ", aborted" : ""));
  }
  if (!output_.json()) output_.Text(table.Text());
}

ExitCode RunController::Judge() const {
  bool good = true;
  for (const RunState& run : runs_) {
    good = good && !run.aborted() && run.errors() == 0 && run.samples() >= run.SamplesDue();
  }
  if (good) return ExitCode::Good;
  return interrupted_ ? ExitCode::Interrupted : ExitCode::RunFailed;
}

}  // namespace torvell
