#include "host/desktop/instrument_session.h"

#include <QTimer>
#include <algorithm>

#include "host/desktop/abort_consent.h"
#include "host/tray/preparation.h"
#include "host/tray/tray_file.h"

namespace torvell {
namespace {

// How often the window looks for what has come: quicker than anybody sees, and cheap.
constexpr int kPollMilliseconds = 100;
constexpr size_t kMostUndo = 50;

}  // namespace

InstrumentSession::InstrumentSession(Host& host, GuiThread& gui, const InstrumentEntry& entry)
    : host_(host), gui_(gui), entry_(entry) {
  worker_ = std::make_unique<Worker>(gui_, "window work " + entry_.identity.portName);
  feed_ = std::make_unique<ReadingsFeed>(entry_);
  auto* timer = new QTimer(this);
  connect(timer, &QTimer::timeout, this, &InstrumentSession::Poll);
  timer->start(kPollMilliseconds);
  Reload();
}

InstrumentSession::~InstrumentSession() { closing_ = true; }

void InstrumentSession::EndRun(const std::function<void()>& done) {
  closing_ = true;
  const auto over = [this, done] {
    // Edits that wait for each other are put in first. Behind an open dialog they would wait for
    // ever.
    if (dialogOpen_) {
      done();
      return;
    }
    waiting_.push_back(done);
    RunWaiting();
  };
  worker_->Do(
      this,
      [this] {
        const AbortConsent::Scope yes;
        if (runner_ && !runner_->HasFinished()) runner_->Abort();
        runner_.reset();
      },
      over, [over](const QString&) { over(); });
}

void InstrumentSession::Finish() {
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
  // During a run the tray is no concern of the commands that steer it.
  situation.busy = busy_ > 0 || (run_ == nullptr && reloading_);
  situation.preparing = preparing_;
  situation.summaryOpen = summary_.has_value();
  situation.simulated = entry_.identity.simulated;
  return situation;
}

void InstrumentSession::SetBusy(int change) {
  busy_ += change;
  Q_EMIT StateChanged();
  RunWaiting();
}

void InstrumentSession::WhenIdle(std::function<void()> job) {
  if (closing_) return;
  waiting_.push_back(std::move(job));
  RunWaiting();
}

void InstrumentSession::RunWaiting() {
  while (!IsBusy() && !waiting_.empty()) {
    const std::function<void()> job = std::move(waiting_.front());
    waiting_.erase(waiting_.begin());
    job();
  }
}

void InstrumentSession::Work(std::function<void()> job, std::function<void()> done,
                             std::function<void()> failed) {
  SetBusy(1);
  worker_->Do(
      this, std::move(job),
      [this, done = std::move(done)] {
        if (done) done();
        SetBusy(-1);
      },
      [this, failed = std::move(failed)](const QString& text) {
        if (failed) failed();
        Reload();  // first, so that what waits is made from what stands there now
        SetBusy(-1);
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
        // First, so that whoever hears of the new tray may change it.
        over();
        RebuildRows();
        RunWaiting();
      },
      [this, over](const QString&) {
        over();
        Q_EMIT StateChanged();
        RunWaiting();
      });
}

void InstrumentSession::RebuildRows() {
  rows_ = run_ != nullptr ? RowsOfRun(traySize_, *run_, failures_) : RowsOfTray(traySize_, tray_);
  Q_EMIT TrayChanged();
  Q_EMIT StateChanged();
}

void InstrumentSession::Start() {
  if (run_ != nullptr || starting_) return;
  starting_ = true;
  WhenIdle([this] { StartNow(); });  // with the edits that are on their way
}

void InstrumentSession::StartNow() {
  if (closing_) {  // it would begin a run behind the one that was ended
    starting_ = false;
    return;
  }
  auto plan = std::make_shared<std::vector<TrayPosition>>();
  failures_.clear();
  pauseRequested_ = false;
  aborted_ = false;
  events_.TakeAll();
  Work(
      [this, plan] {
        *plan = ReadTray(entry_);
        runner_ = host_.StartTray(entry_, &recorder_);
      },
      [this, plan] {
        starting_ = false;
        run_ = std::make_unique<RunState>(entry_, *plan);
        runStarted_ = platform::MonotonicTime();
        undo_.clear();
        Q_EMIT RunBegan();
        RebuildRows();
      },
      [this] { starting_ = false; });
}

void InstrumentSession::PauseAfterSample() {
  if (!IsRunning()) return;
  pauseRequested_ = true;
  Work([this] {
    if (runner_) runner_->PauseAfterSample();
  });
}

void InstrumentSession::PauseNow() {
  if (!IsRunning()) return;
  pauseRequested_ = true;
  Work([this] {
    if (runner_) runner_->PauseNow();
  });
}

void InstrumentSession::Resume() {
  if (!IsRunning()) return;
  pauseRequested_ = false;
  Work([this] {
    if (runner_) runner_->Resume();
  });
}

void InstrumentSession::Abort() {
  if (!IsRunning()) return;
  aborted_ = true;
  Work([this] {
    const AbortConsent::Scope yes;
    if (runner_) runner_->Abort();
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

void InstrumentSession::Change(EditMaker make) {
  WhenIdle([this, make = std::move(make)] {
    if (run_ == nullptr) Apply(make(cells_));
  });
}

void InstrumentSession::Apply(const TrayEdit& edit) {
  if (edit.empty()) return;
  auto before = std::make_shared<TrayEdit>();
  Work([this, edit, before] { *before = ApplyEdit(host_, entry_, edit); },
       [this, before] {
         undo_.push_back(std::move(*before));
         if (undo_.size() > kMostUndo) undo_.erase(undo_.begin());
         Reload();
       });
}

void InstrumentSession::Undo() {
  WhenIdle([this] {
    if (undo_.empty() || run_ != nullptr) return;
    const TrayEdit edit = undo_.back();
    Work([this, edit] { ApplyEdit(host_, entry_, edit); },
         [this] {
           undo_.pop_back();
           Reload();
         });
  });
}

void InstrumentSession::EditInDialog(std::function<std::shared_ptr<rvx::Action>()> make,
                                     const std::vector<int>& positions) {
  dialogAsked_ = true;
  auto action = std::make_shared<std::shared_ptr<rvx::Action>>();
  Work(
      [this, make = std::move(make), action] {
        host_.users().Require(kLevelOperator, "change the tray");
        *action = make();
      },
      [this, action, positions] {
        // The module's dialogs stand on the window's thread. What they edit stands in no tray until
        // it is accepted, so nothing has to be taken back.
        TrayEdit edit;
        dialogOpen_ = true;
        try {
          if (!closing_ && (*action)->Edit() != 0) {
            for (const int position : positions) edit[position] = CellOf(**action);
          }
        } catch (...) {
          Q_EMIT Failed(DescribeRaised());
        }
        dialogOpen_ = false;
        dialogAsked_ = false;
        Change([edit](const std::vector<TrayCell>&) { return edit; });
      },
      [this] { dialogAsked_ = false; });
}

// From the tray as it stands behind the edits that are on their way, and one dialog at a time.
void InstrumentSession::AskInDialog(std::function<void()> ask) {
  if (std::exchange(dialogAsked_, true)) return;
  WhenIdle([this, ask = std::move(ask)] {
    dialogAsked_ = false;
    if (run_ == nullptr && !starting_ && !closing_) ask();
  });
}

void InstrumentSession::AddSample(int kind, const std::vector<int>& positions) {
  AskInDialog([this, kind, positions] { AddSampleNow(kind, positions); });
}

void InstrumentSession::AddSampleNow(int kind, const std::vector<int>& positions) {
  std::vector<int> empty;
  for (const int position : positions) {
    if (position < static_cast<int>(cells_.size()) &&
        cells_[static_cast<size_t>(position)].empty()) {
      empty.push_back(position);
    }
  }
  if (empty.empty()) {
    Q_EMIT Notice(
        QStringLiteral("The selected positions are filled. Select empty ones, or clear them "
                       "first."));
    return;
  }
  EditInDialog(
      [this, kind] {
        return std::shared_ptr<rvx::Action>(entry_.instrument->CreateSampleAction(kind));
      },
      empty);
}

void InstrumentSession::Edit(int position) {
  AskInDialog([this, position] {
    if (position < 0 || position >= static_cast<int>(cells_.size())) return;
    const TrayCell cell = cells_[static_cast<size_t>(position)];
    if (cell.empty()) return;
    EditInDialog([this, cell] { return MakeAction(entry_, cell); }, {position});
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
  const bool counts = run_->Take(event);
  switch (event.kind) {
    case RunEvent::Kind::SampleStarted:
      // The way back behind the last sample draws no curve over that sample's.
      if (counts) Q_EMIT CurveBegins();
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
  worker_->Do(this, [this] { runner_.reset(); });
  Q_EMIT RunEnded();
  Reload();
}

}  // namespace torvell
