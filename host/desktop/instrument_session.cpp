#include "host/desktop/instrument_session.h"

#include <QTimer>

namespace torvell {
namespace {

// How often the window takes in what has arrived: faster than the eye, and cheap.
constexpr int kPollMilliseconds = 100;

}  // namespace

InstrumentSession::InstrumentSession(Host& host, GuiThread& gui, const InstrumentEntry& entry)
    : entry_(entry),
      tray_(host, entry),
      driver_(host, entry),
      worker_(gui, "window work " + entry.identity.portName),
      preparation_(gui, entry),
      feed_(entry) {
  ConnectParts();
  auto* timer = new QTimer(this);
  connect(timer, &QTimer::timeout, this, &InstrumentSession::Poll);
  timer->start(kPollMilliseconds);
  Reload();
}

InstrumentSession::~InstrumentSession() {
  preparation_.Cancel();
  // The jobs use the members, so they end before the first member is destroyed.
  Finish();
}

void InstrumentSession::ConnectParts() {
  connect(&jobs_, &TrayJobs::TrayRead, this, &InstrumentSession::RebuildRows);
  connect(&jobs_, &TrayJobs::Changed, this, &InstrumentSession::StateChanged);
  connect(&jobs_, &TrayJobs::Failed, this, &InstrumentSession::Failed);
  connect(&run_, &RunControl::Changed, this, &InstrumentSession::RebuildRows);
  connect(&run_, &RunControl::Began, &editor_, &TrayEditor::ForgetUndo);
  connect(&run_, &RunControl::CurveBegins, this, &InstrumentSession::CurveBegins);
  connect(&run_, &RunControl::Paused, this, &InstrumentSession::RunPaused);
  connect(&run_, &RunControl::Ended, this, &InstrumentSession::RunEnded);
  connect(&editor_, &TrayEditor::Notice, this, &InstrumentSession::Notice);
  connect(&dialog_, &SampleDialog::Notice, this, &InstrumentSession::Notice);
  connect(&dialog_, &SampleDialog::Failed, this, &InstrumentSession::Failed);
  connect(&preparation_, &CellPreparation::Changed, this, &InstrumentSession::StateChanged);
  connect(&preparation_, &CellPreparation::Notice, this, &InstrumentSession::Notice);
  connect(&preparation_, &CellPreparation::Failed, this, &InstrumentSession::Failed);
}

void InstrumentSession::EndRun(const std::function<void()>& done) {
  preparation_.Cancel();
  jobs_.Close();
  run_.End([this, done] {
    // An open dialog holds up the jobs that wait, and nobody may be there to close it.
    if (dialog_.IsOpen()) {
      done();
    } else {
      jobs_.AfterWaiting(done);
    }
  });
}

void InstrumentSession::Finish() {
  preparation_.Finish();
  worker_.Finish();
}

InstrumentSituation InstrumentSession::Situation() const {
  InstrumentSituation situation;
  situation.silence = readings_.Silence();
  situation.readings = readings_.readings();
  situation.running = IsRunning();
  situation.paused = run() != nullptr && run()->paused();
  situation.pauseRequested = run_.phase() == RunPhase::PauseRequested;
  if (run() != nullptr && run()->Current() != nullptr) {
    situation.position = run()->Current()->plan.position + 1;
  }
  situation.filled = static_cast<int>(jobs_.tray().filled.size());
  // During a run, reading the tray does not hinder the commands that control the run.
  situation.busy = jobs_.IsAsking() || (run() == nullptr && jobs_.IsReading());
  situation.preparing = preparation_.IsUnderWay();
  situation.summaryOpen = run_.phase() == RunPhase::Ended;
  situation.simulated = entry_.identity.simulated;
  return situation;
}

void InstrumentSession::SaveFile(const QString& path) {
  // Saves what is on the screen, also after a run, when the instrument's own tray is empty.
  if (run() == nullptr) {
    editor_.Save(path, jobs_.tray().filled);
    return;
  }
  std::vector<TrayPosition> tray;
  for (const RunPosition& position : run()->positions()) tray.push_back(position.plan);
  editor_.Save(path, tray);
}

void InstrumentSession::RebuildRows() {
  rows_ = run() != nullptr ? run_.Rows() : RowsOfTray(jobs_.tray().size, jobs_.tray().filled);
  Q_EMIT TrayChanged();
  Q_EMIT StateChanged();
}

void InstrumentSession::Poll() {
  const platform::Microseconds now = platform::MonotonicTime();
  const std::vector<TimedReadings> arrived = feed_.Take();
  const bool changed = readings_.Take(arrived, now);
  if (!arrived.empty()) Q_EMIT ReadingsArrived(arrived);
  run_.TakeEvents();
  if (changed) Q_EMIT StateChanged();
}

}  // namespace torvell
