#include "host/desktop/instrument_session.h"

#include <QTimer>
#include <algorithm>

#include "host/desktop/prompter.h"
#include "host/tray/preparation.h"
#include "host/tray/tray_file.h"

namespace torvell {
namespace {

// How often the window looks for what has come: quicker than anybody sees, and cheap.
constexpr int kPollMilliseconds = 100;
constexpr size_t kMostUndo = 50;

}  // namespace

InstrumentSession::InstrumentSession(Host& host, GuiThread& gui, WindowPrompter& prompter,
                                     const InstrumentEntry& entry)
    : host_(host), gui_(gui), prompter_(prompter), entry_(entry) {
  worker_ = std::make_unique<Worker>(gui_, "window work " + entry_.identity.portName);
  feed_ = std::make_unique<ReadingsFeed>(entry_);
  auto* timer = new QTimer(this);
  connect(timer, &QTimer::timeout, this, &InstrumentSession::Poll);
  timer->start(kPollMilliseconds);
  Reload();
}

InstrumentSession::~InstrumentSession() { closing_ = true; }

void InstrumentSession::Finish() {
  closing_ = true;
  if (preparation_) preparation_->Finish();
  worker_->Finish();
}

InstrumentSituation InstrumentSession::Situation() const {
  InstrumentSituation situation;
  if (latestTime_) {
    situation.silence =
        std::max(platform::Milliseconds(0),
                 std::chrono::duration_cast<platform::Milliseconds>(lookedAt_ - *latestTime_));
  }
  situation.readings = latest_;
  situation.running = IsRunning();
  situation.paused = run_ != nullptr && run_->paused();
  situation.pauseRequested = pauseRequested_;
  if (run_ != nullptr && run_->Current() != nullptr) {
    situation.position = run_->Current()->plan.position + 1;
  }
  situation.filled = static_cast<int>(tray_.size());
  situation.busy = busy_ > 0;
  situation.preparing = preparing_;
  situation.summaryOpen = summary_.has_value();
  situation.simulated = entry_.identity.simulated;
  return situation;
}

void InstrumentSession::SetBusy(int change) {
  busy_ += change;
  Q_EMIT StateChanged();
}

void InstrumentSession::Work(std::function<void()> job, std::function<void()> done) {
  SetBusy(1);
  worker_->Do(
      this, std::move(job),
      [this, done = std::move(done)] {
        if (done) done();
        SetBusy(-1);
      },
      [this](const QString& text) {
        starting_ = false;
        SetBusy(-1);
        Reload();
        Q_EMIT Failed(text);
      });
}

void InstrumentSession::Reload() {
  if (reloading_) {
    reloadAgain_ = true;
    return;
  }
  reloading_ = true;
  struct Found {
    int size = 0;
    std::vector<TrayPosition> tray;
    std::vector<TrayCell> cells;
  };
  auto found = std::make_shared<Found>();
  const auto over = [this] {
    reloading_ = false;
    if (std::exchange(reloadAgain_, false)) Reload();
  };
  worker_->Do(
      this,
      [entry = entry_, found] {
        found->size = TraySize(entry);
        found->tray = ReadTray(entry);
        found->cells = ReadCells(entry);
      },
      [this, found, over] {
        traySize_ = found->size;
        tray_ = std::move(found->tray);
        cells_ = std::move(found->cells);
        estimatedSeconds_ = 0;
        for (const TrayPosition& position : tray_) estimatedSeconds_ += position.estimatedSeconds;
        RebuildRows();
        over();
      },
      [over](const QString&) { over(); });
}

void InstrumentSession::RebuildRows() {
  rows_ = run_ != nullptr ? RowsOfRun(traySize_, *run_, failures_) : RowsOfTray(traySize_, tray_);
  Q_EMIT TrayChanged();
  Q_EMIT StateChanged();
}

void InstrumentSession::Start() {
  if (run_ != nullptr || starting_) return;
  starting_ = true;
  auto plan = std::make_shared<std::vector<TrayPosition>>();
  auto started = std::make_shared<std::shared_ptr<TrayRunner>>();
  failures_.clear();
  pauseRequested_ = false;
  aborted_ = false;
  events_.TakeAll();
  Work(
      [this, plan, started] {
        *plan = ReadTray(entry_);
        *started = host_.StartTray(entry_, &recorder_);
      },
      [this, plan, started] {
        starting_ = false;
        runner_ = std::move(*started);
        run_ = std::make_unique<RunState>(entry_, *plan);
        runStarted_ = platform::MonotonicTime();
        undo_.clear();
        Q_EMIT RunBegan();
        RebuildRows();
      });
}

void InstrumentSession::PauseAfterSample() {
  if (!runner_) return;
  pauseRequested_ = true;
  Work([runner = runner_] { runner->PauseAfterSample(); });
}

void InstrumentSession::PauseNow() {
  if (!runner_) return;
  pauseRequested_ = true;
  Work([runner = runner_] { runner->PauseNow(); });
}

void InstrumentSession::Resume() {
  if (!runner_) return;
  pauseRequested_ = false;
  Work([runner = runner_] { runner->Resume(); });
}

void InstrumentSession::Abort() {
  if (!runner_) return;
  aborted_ = true;
  Work([this, runner = runner_] {
    const WindowPrompter::YesScope yes(prompter_);
    runner->Abort();
  });
}

// On a worker of its own: it takes minutes, and the tray can be filled meanwhile.
void InstrumentSession::Prepare() {
  if (preparing_) return;
  preparing_ = true;
  if (!preparation_) {
    preparation_ = std::make_unique<Worker>(gui_, "preparation " + entry_.identity.portName);
  }
  Q_EMIT Notice(QStringLiteral("Preparing: the home flag is set and the cell is cooled."));
  const auto over = [this] {
    preparing_ = false;
    Q_EMIT StateChanged();
  };
  preparation_->Do(
      this,
      [this] {
        PrepareSimulated(
            entry_, [this] { return closing_.load(); }, [](const auto&) {});
      },
      [this, over] {
        over();
        Q_EMIT Notice(QStringLiteral("The simulated instrument is ready."));
      },
      [this, over](const QString& text) {
        over();
        Q_EMIT Failed(text);
      });
}

void InstrumentSession::AcknowledgeSummary() {
  if (!summary_) return;
  summary_.reset();
  run_.reset();
  failures_.clear();
  RebuildRows();
  Reload();
}

void InstrumentSession::Apply(const TrayEdit& edit) {
  if (edit.empty() || run_ != nullptr) return;
  auto before = std::make_shared<TrayEdit>();
  Work([this, edit, before] { *before = ApplyEdit(host_, entry_, edit); },
       [this, before] {
         undo_.push_back(std::move(*before));
         if (undo_.size() > kMostUndo) undo_.erase(undo_.begin());
         Reload();
       });
}

void InstrumentSession::Undo() {
  if (undo_.empty() || run_ != nullptr) return;
  const TrayEdit edit = undo_.back();
  undo_.pop_back();
  Work([this, edit] { ApplyEdit(host_, entry_, edit); }, [this] { Reload(); });
}

// The module's dialogs stand on the window's thread, and the action lives in the tray while they
// do, because a refused first edit takes it out of there.
void InstrumentSession::EditHeld(std::shared_ptr<rvx::Action> action,
                                 std::function<void(bool)> then) {
  bool accepted = false;
  try {
    accepted = action->Edit() != 0;
  } catch (...) {
    Q_EMIT Failed(DescribeRaised());
  }
  then(accepted);
}

void InstrumentSession::AddSample(int kind, const std::vector<int>& positions) {
  std::vector<int> empty;
  for (const int position : positions) {
    if (position < static_cast<int>(cells_.size()) &&
        cells_[static_cast<size_t>(position)].empty()) {
      empty.push_back(position);
    }
  }
  if (empty.empty()) {
    Q_EMIT Notice(
        QStringLiteral("The selected positions are filled. Select empty ones, or clear "
                       "them first."));
    return;
  }
  auto action = std::make_shared<std::shared_ptr<rvx::Action>>();
  const int first = empty.front();
  Work(
      [this, kind, first, action] {
        host_.users().Require(kLevelOperator, "change the tray");
        action->reset(entry_.instrument->CreateSampleAction(kind));
        std::shared_ptr<rvx::Action> old;
        rvx::TrayOfSampleActions& tray = *entry_.instrument->GetTray(0);
        {
          const rvx::TrayGuard guard(tray);
          old = tray.Replace(first, *action);
        }
        old->Stop();
      },
      [this, action, empty] {
        EditHeld(*action, [this, action, empty](bool accepted) {
          if (!accepted) {
            Reload();
            return;
          }
          auto before = std::make_shared<TrayEdit>();
          Work(
              [this, action, empty, before] {
                const TrayCell cell{(*action)->GetClassName(), (*action)->GetSampleId(),
                                    (*action)->GetStateText()};
                TrayEdit rest;
                for (const int position : empty) rest[position] = cell;
                rest.erase(empty.front());
                *before = ApplyEdit(host_, entry_, rest);
                (*before)[empty.front()] = TrayCell();
              },
              [this, before] {
                undo_.push_back(std::move(*before));
                Reload();
              });
        });
      });
}

void InstrumentSession::Edit(int position) {
  auto action = std::make_shared<std::shared_ptr<rvx::Action>>();
  auto before = std::make_shared<TrayEdit>();
  const std::vector<TrayCell>& cells = cells_;
  if (position < 0 || position >= static_cast<int>(cells.size()) ||
      cells[static_cast<size_t>(position)].empty()) {
    return;
  }
  (*before)[position] = cells[static_cast<size_t>(position)];
  Work(
      [this, position, action] {
        host_.users().Require(kLevelOperator, "change the tray");
        rvx::TrayOfSampleActions& tray = *entry_.instrument->GetTray(0);
        const rvx::TrayGuard guard(tray);
        *action = tray.Hold(position);
      },
      [this, action, before] {
        EditHeld(*action, [this, before](bool accepted) {
          if (!accepted) return;
          Work([this] { StoreTray(host_, entry_); },
               [this, before] {
                 undo_.push_back(std::move(*before));
                 Reload();
               });
        });
      });
}

void InstrumentSession::LoadFile(const QString& path) {
  auto before = std::make_shared<TrayEdit>();
  Work(
      [this, path, before] {
        host_.users().Require(kLevelOperator, "load a tray");
        TrayActions actions = BuildTray(entry_, path.toStdString());
        const std::vector<TrayCell> cells = ReadCells(entry_);
        for (size_t i = 0; i < cells.size(); ++i) (*before)[static_cast<int>(i)] = cells[i];
        ReplaceTray(host_, entry_, std::move(actions));
        CloseInterrupted(host_, entry_);
      },
      [this, before, path] {
        undo_.push_back(std::move(*before));
        Q_EMIT Notice(QStringLiteral("The tray was loaded from %1.").arg(path));
        Reload();
      });
}

void InstrumentSession::SaveFile(const QString& path) {
  // What stands on the screen, also behind a run, when the instrument's own tray is empty.
  std::vector<TrayPosition> tray = tray_;
  if (run_ != nullptr) {
    tray.clear();
    for (const RunPosition& position : run_->positions()) tray.push_back(position.plan);
  }
  Work([path, tray] { WriteWholeFile(path.toStdString(), FormatTrayFile(TrayFileOf(tray))); },
       [this, path] { Q_EMIT Notice(QStringLiteral("The tray was saved to %1.").arg(path)); });
}

void InstrumentSession::KeepRest() {
  auto notices = std::make_shared<std::vector<std::string>>();
  Work(
      [this, notices] {
        const auto interrupted = host_.journal().InterruptedOf(entry_.identity.archiveKey);
        if (!interrupted) return;
        *notices = KeepWhatIsNotMeasured(host_, entry_, *interrupted);
        host_.journal().Close(interrupted->run);
      },
      [this, notices] {
        for (const std::string& text : *notices) Q_EMIT Notice(QString::fromStdString(text));
        Reload();
      });
}

void InstrumentSession::DropInterrupted() {
  Work(
      [this] {
        ReplaceTray(host_, entry_, EmptyTray(entry_));
        CloseInterrupted(host_, entry_);
      },
      [this] { Reload(); });
}

void InstrumentSession::Poll() {
  lookedAt_ = platform::MonotonicTime();
  const std::vector<TimedReadings> readings = feed_->Take();
  if (!readings.empty()) {
    latest_ = readings.back().readings;
    latestTime_ = readings.back().time;
    Q_EMIT ReadingsArrived(readings);
  }
  if (run_ != nullptr) {
    bool shown = false;
    for (const RunEvent& event : events_.TakeAll()) {
      Handle(event);
      shown = true;
    }
    if (shown) RebuildRows();
  }
  const bool stale = IsStale(Situation());
  // Old values also change, by their age.
  if (!readings.empty() || stale || stale != wasStale_) Q_EMIT StateChanged();
  wasStale_ = stale;
}

void InstrumentSession::Handle(const RunEvent& event) {
  const RunPosition* current = run_->Current();
  if (event.kind == RunEvent::Kind::Error && IsFailure(*event.error) && current != nullptr) {
    failures_[current->plan.position] = QString::fromStdString(event.error->message);
  }
  run_->Take(event);
  switch (event.kind) {
    case RunEvent::Kind::SampleStarted:
      Q_EMIT CurveBegins();
      break;
    case RunEvent::Kind::Sample:
      Q_EMIT ResultStored();
      // The last curve stays to be looked at.
      if (current != nullptr &&
          static_cast<int>(current->samples.size()) < current->plan.TestCount()) {
        Q_EMIT CurveBegins();
      }
      break;
    case RunEvent::Kind::PauseChanged:
      pauseRequested_ = false;
      if (event.paused) Q_EMIT RunPaused();
      break;
    case RunEvent::Kind::TrayFinished:
      HandleEnd();
      break;
    case RunEvent::Kind::TrayStarted:
    case RunEvent::Kind::Status:
    case RunEvent::Kind::SampleFinished:
    case RunEvent::Kind::Error:
      break;
  }
}

void InstrumentSession::HandleEnd() {
  // An abort that came behind the last result aborted nothing.
  if (aborted_ && run_->samples() < run_->SamplesDue()) run_->MarkAborted();
  RunSummary summary;
  summary.samples = run_->samples();
  summary.samplesDue = run_->SamplesDue();
  summary.errors = run_->errors();
  summary.aborted = run_->aborted();
  summary.duration = platform::MonotonicTime() - runStarted_;
  for (const TrayRow& row : RowsOfRun(traySize_, *run_, failures_)) {
    if (row.state == RowState::Failed) ++summary.failedPositions;
  }
  summary_ = summary;
  // Its end waits for the last lines of the run's threads.
  worker_->Do(this, [runner = std::move(runner_)]() mutable { runner.reset(); });
  runner_.reset();
  Q_EMIT RunEnded();
  Reload();
}

}  // namespace torvell
