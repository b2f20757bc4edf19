#include "host/desktop/main_window.h"

#include <QAction>
#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QVBoxLayout>
#include <cmath>
#include <limits>

#include "host/desktop/abort_consent.h"
#include "host/desktop/banner.h"
#include "host/desktop/closing_question.h"
#include "host/desktop/demo_folder.h"
#include "host/desktop/host_events.h"
#include "host/desktop/instrument_panel.h"
#include "host/desktop/instrument_session.h"
#include "host/desktop/messages_page.h"
#include "host/desktop/plot.h"
#include "host/desktop/run_progress.h"
#include "host/desktop/samples_page.h"
#include "host/desktop/tray_page.h"
#include "host/desktop/tray_view.h"
#include "host/desktop/user_dialogs.h"
#include "host/desktop/window_start.h"
#include "host/tray/advice.h"
#include "platform/log.h"

namespace torvell {
namespace {

constexpr int kNoticeMilliseconds = 8000;
constexpr int kMaxFailureLetters = 2000;  // letters in one box
constexpr int kNarrowestTray = 480;
constexpr int kNarrowestSide = 320;
constexpr int64_t kHistory = 1000;  // messages of earlier days in the list

double SecondsOf(platform::Microseconds time) { return static_cast<double>(time.count()) / 1e6; }

}  // namespace

MainWindow::MainWindow(Host& host, GuiThread& gui, AbortConsent& consent,
                       const WindowOptions& options)
    : host_(host), gui_(gui), consent_(consent), options_(options) {
  setWindowTitle(QStringLiteral("TORVELL"));
  worker_ = std::make_unique<Worker>(gui_, "window archive work");
  screens_ = std::make_unique<Screens>(gui_);
  BuildLayout();
  BuildMenus();
  connect(screens_.get(), &Screens::Offered, this, &MainWindow::RefreshMenus);
  connect(screens_.get(), &Screens::Failed, this, &MainWindow::ShowFailure);
  ConnectMessages();
  ConnectHost();
  if (options_.lockMinutes > 0) {
    idle_ = new IdleWatch(options_.lockMinutes, this);
    connect(idle_, &IdleWatch::Idle, this, &MainWindow::Lock);
  }
  platform::SetHelpViewer(this);
  RefreshActor();
  RefreshBanner();
}

MainWindow::~MainWindow() {
  platform::SetHelpViewer(nullptr);
  events_.reset();
  // The widgets use the sessions and the worker, so they are destroyed first.
  delete centralWidget();
}

void MainWindow::ConnectMessages() {
  connect(&messages_, &MessageList::OpenChanged, this, &MainWindow::RefreshBanner);
  connect(&messages_, &MessageList::Acknowledged, this, [this](const std::vector<int64_t>& rows) {
    worker_->Do(
        this, [this, rows] { host_.errors().Acknowledge(rows); }, {},
        [this](const QString& text) { ShowFailure(text); });
  });
}

// These events are ignored once the window closes.
void MainWindow::ConnectHost() {
  events_ = std::make_unique<HostEvents>(host_, gui_);
  connect(events_.get(), &HostEvents::Reported, this, [this](const ErrorReport& report) {
    if (closing_) return;
    messages_.Add(report);
    if (IsFailure(report)) {
      Notify(QStringLiteral("TORVELL: failure"), QString::fromStdString(report.message));
    }
  });
  connect(events_.get(), &HostEvents::Stored, this, [this] {
    if (!closing_) samples_->NoteStored();
  });
  connect(events_.get(), &HostEvents::InstrumentChanged, this, [this] {
    if (closing_) return;
    for (const auto& session : sessions_) session->Reload();
    // New constants may allow screens and samples that were refused before.
    if (selected_ != nullptr) screens_->Ask(selected_->entry(), level_);
  });
  connect(events_.get(), &HostEvents::SelectionWanted, this, [this](int32_t index) {
    // The call was posted: a selection that has been overtaken by another one must not be carried
    // out, because carrying it out selects in turn, and two of them would go on for ever.
    if (closing_ || index != host_.instruments().SelectedInstrument()) return;
    // The list may hold instruments that have no session.
    const rvx::ViscometerInstrument* const wanted = host_.instruments().GetInstrument(index);
    for (const auto& session : sessions_) {
      if (session->entry().instrument != wanted) continue;
      if (session.get() != selected_) Select(session.get());
      return;
    }
  });
}

void MainWindow::BuildLayout() {
  auto* center = new QWidget(this);
  auto* layout = new QVBoxLayout(center);
  layout->setContentsMargins(kGap, kSmallGap, kGap, kSmallGap);
  layout->setSpacing(kSmallGap);
  simulation_ = new Banner(Banner::Tone::Quiet, center);
  simulation_->SetText(ShapeIcon(Shape::Info),
                       QStringLiteral("SIMULATION: the instrument is software. Its results are no "
                                      "measurements."));
  simulation_->setVisible(host_.IsSimulated());
  layout->addWidget(simulation_);
  message_ = new Banner(Banner::Tone::Loud, center);
  connect(message_->AddButton(QStringLiteral("Show")), &QPushButton::clicked, this,
          [this] { tabs_->setCurrentWidget(messagesPage_); });
  connect(message_->AddButton(QStringLiteral("Acknowledge")), &QPushButton::clicked, this,
          &MainWindow::AcknowledgeNewest);
  layout->addWidget(message_);
  layout->addWidget(BuildPages(center), 1);
  setCentralWidget(center);

  actor_ = new QLabel(this);
  actor_->setContentsMargins(kGap, 0, kGap, 0);
  statusBar()->addPermanentWidget(actor_);
  statusBar()->setSizeGripEnabled(false);
  resize(1280, 800);
}

QWidget* MainWindow::BuildPages(QWidget* parent) {
  auto* splitter = new QSplitter(Qt::Horizontal, parent);
  splitter->setChildrenCollapsible(false);
  panel_ = new InstrumentPanel(splitter);
  tray_ = new TrayPage(splitter);
  splitter->addWidget(panel_);
  splitter->addWidget(tray_);
  splitter->addWidget(BuildSide());
  // Set minimum widths, so that the stretch factors below apply whatever sizes the parts ask for.
  tray_->setMinimumWidth(kNarrowestTray);
  splitter->widget(2)->setMinimumWidth(kNarrowestSide);
  splitter->setStretchFactor(1, 3);
  splitter->setStretchFactor(2, 2);
  splitter->setSizes({208, 680, 368});
  connect(panel_, &InstrumentPanel::Chosen, this, &MainWindow::Select);
  connect(tray_, &TrayPage::Notice, this, &MainWindow::ShowNotice);
  connect(tray_, &TrayPage::ExportAsked, this, &MainWindow::ExportRun);
  return splitter;
}

void MainWindow::ExportRun() {
  if (selected_ == nullptr || selected_->run() == nullptr) return;
  std::vector<StoredSample> samples;
  for (const RunPosition& position : selected_->run()->positions()) {
    samples.insert(samples.end(), position.samples.begin(), position.samples.end());
  }
  samples_->ExportThese(std::move(samples));
}

QWidget* MainWindow::BuildSide() {
  auto* side = new QSplitter(Qt::Vertical, this);
  side->setChildrenCollapsible(false);
  tabs_ = new QTabWidget(side);
  tabs_->setDocumentMode(true);
  samples_ = new SamplesPage(host_.samples(), *worker_, tabs_);
  messagesPage_ = new MessagesPage(messages_, tabs_);
  tabs_->addTab(samples_, QStringLiteral("Sa&mples"));
  tabs_->addTab(messagesPage_, QStringLiteral("M&essages"));
  connect(samples_, &SamplesPage::Notice, this, &MainWindow::ShowNotice);
  connect(samples_, &SamplesPage::Failed, this, &MainWindow::ShowFailure);
  plot_ = MakePlot({QStringLiteral("Temperature"), QStringLiteral("°C"), 1.0},
                   {QStringLiteral("Speed"), QStringLiteral("rpm/1000"), 0.05}, side);
  side->addWidget(tabs_);
  side->addWidget(plot_->widget());
  side->setStretchFactor(0, 3);
  side->setStretchFactor(1, 2);
  side->setSizes({420, 260});
  return side;
}

// Collects what must be known before the user is greeted.
void MainWindow::FindInstruments(Start& start) {
  if (start.isDemo) WriteDemoStandards(host_);
  host_.DiscoverInstruments();
  consent_.StandInFront();
  if (start.isDemo) FillDemoFolder(host_);
  start.isDemo = start.isDemo || IsDemoFolder(host_.dataFolder());
  start.hasUsers = !host_.users().IsEmpty();
  start.level = host_.users().ActingLevel();
  for (const InstrumentEntry& entry : host_.instruments().Entries()) {
    const auto interrupted = host_.journal().InterruptedOf(entry.identity.archiveKey);
    if (interrupted) start.interrupted.push_back(*interrupted);
  }
}

void MainWindow::Begin() {
  auto history = std::make_shared<std::vector<ErrorReport>>();
  worker_->Do(
      this, [this, history] { *history = host_.errors().Last(kHistory); },
      [this, history] { messages_.SetHistory(*history); });
  for (const std::string& notice : host_.notices()) ShowNotice(QString::fromStdString(notice));
  auto start = std::make_shared<Start>();
  start->isDemo = options_.demo;
  worker_->Do(
      this, [this, start] { FindInstruments(*start); },
      [this, start] {
        TakeInstruments();
        RefreshActor();
        Greet(*start);
        interrupted_ = std::move(start->interrupted);
        Q_EMIT Ready();
      },
      [this](const QString& text) {
        TakeInstruments();
        RefreshActor();
        ShowFailure(text);
        Q_EMIT Ready();
      });
}

void MainWindow::TakeInstruments() {
  std::vector<InstrumentSession*> list;
  for (const InstrumentEntry& entry : host_.instruments().Entries()) {
    if (entry.scripting == nullptr) continue;
    auto session = std::make_unique<InstrumentSession>(host_, gui_, entry);
    Connect(*session);
    list.push_back(session.get());
    sessions_.push_back(std::move(session));
  }
  panel_->SetSessions(list);
  Select(list.empty() ? nullptr : list.front());
}

void MainWindow::Connect(InstrumentSession& session) {
  InstrumentSession* one = &session;
  const QString name = QString::fromStdString(session.entry().Title());
  connect(one, &InstrumentSession::Failed, this, &MainWindow::ShowFailure);
  connect(one, &InstrumentSession::Notice, this, &MainWindow::ShowNotice);
  connect(one, &InstrumentSession::StateChanged, this, &MainWindow::RefreshAwake);
  connect(one, &InstrumentSession::CurveBegins, this, [this, one] {
    if (one == selected_) BeginCurve();
  });
  connect(one, &InstrumentSession::ReadingsArrived, this,
          [this, one](const std::vector<TimedReadings>& readings) {
            if (one == selected_ && one->IsRunning()) AddToPlot(readings);
          });
  connect(one, &InstrumentSession::RunPaused, this,
          [name] { Notify(name, QStringLiteral("The tray is paused.")); });
  connect(one, &InstrumentSession::RunEnded, this, [one, name] {
    if (one->summary()) Notify(name, DescribeSummary(*one->summary()));
  });
}

void MainWindow::Select(InstrumentSession* session) {
  selected_ = session;
  panel_->Select(session);
  tray_->SetSession(session);
  plot_->Restart();
  BeginCurve();
  if (session != nullptr) {
    screens_->Ask(session->entry(), level_);
    const std::vector<InstrumentEntry> all = host_.instruments().Entries();
    for (size_t i = 0; i < all.size(); ++i) {
      if (all[i].instrument == session->entry().instrument) {
        host_.instruments().SelectInstrument(static_cast<int32_t>(i), 1);
      }
    }
  }
  tray_->view()->setFocus();
  RefreshMenus();
}

void MainWindow::BeginCurve() {
  curveStart_ = -1.0;
  const RunState* run = selected_ != nullptr ? selected_->run() : nullptr;
  const RunPosition* position = run != nullptr ? run->Current() : nullptr;
  if (position == nullptr) {
    plot_->SetTitle(QString());
    return;
  }
  const int tests = position->plan.TestCount();
  const int test = std::min(static_cast<int>(position->samples.size()) + 1, tests);
  QString sample = QString::fromStdString(position->plan.sampleId);
  if (!sample.isEmpty()) sample.prepend(QStringLiteral(", "));
  // One call of arg: a sample id may hold a percent sign and a digit.
  plot_->SetTitle(QStringLiteral("Position %1%2, test %3 of %4")
                      .arg(QString::number(position->plan.position + 1), sample,
                           QString::number(test), QString::number(tests)));
}

void MainWindow::AddToPlot(const std::vector<TimedReadings>& readings) {
  for (const TimedReadings& each : readings) {
    const double now = SecondsOf(each.time);
    if (curveStart_ < 0.0) {
      // The old curve stays until the new one has a first point.
      plot_->Restart();
      curveStart_ = now;
    }
    plot_->Add(now - curveStart_, each.readings.temperature, each.readings.speed);
  }
}

void MainWindow::RefreshBanner() {
  const MessageRow* open = messages_.NewestOpen();
  message_->setVisible(open != nullptr);
  const int count = messages_.OpenCount();
  tabs_->setTabText(
      1, count == 0 ? QStringLiteral("M&essages") : QStringLiteral("M&essages (%1)").arg(count));
  if (open == nullptr) return;
  const QString source = QString::fromStdString(open->report.source);
  QString text = QStringLiteral("%1: %2").arg(source, QString::fromStdString(open->report.message));
  if (open->count > 1) text = QStringLiteral("(%1 times) ").arg(open->count) + text;
  message_->SetText(
      ShapeIcon(IsFailure(open->report) ? Shape::Warning : Shape::Info, Colors().warningText), text,
      QString::fromStdString(AdviceText(open->report.code, Reader::Window)));
}

void MainWindow::AcknowledgeNewest() {
  for (int row = 0; row < messages_.rowCount(); ++row) {
    if (messages_.at(row).acknowledged) continue;
    messages_.Acknowledge(row);
    return;
  }
}

void MainWindow::ShowNotice(const QString& text) {
  statusBar()->showMessage(QString(text).replace(QLatin1Char('\n'), QLatin1Char(' ')),
                           kNoticeMilliseconds);
}

void MainWindow::ShowFailure(const QString& text) {
  if (closing_) {  // nobody would see the box
    platform::Log(platform::LogLevel::Error, text.toStdString());
    return;
  }
  // One box for any number of failures: a pile of boxes would cover Pause and Abort.
  if (!failures_.isNull() && failures_->isVisible()) {
    const QString shown = failures_->text();
    const QString more = shown.size() < kMaxFailureLetters
                             ? text
                             : QStringLiteral("More has failed; look at what was not done.");
    if (!shown.contains(more)) failures_->setText(shown + QStringLiteral("\n\n") + more);
    return;
  }
  failures_ =
      new QMessageBox(QMessageBox::Warning, QStringLiteral("TORVELL"), text, QMessageBox::Ok, this);
  failures_->setAttribute(Qt::WA_DeleteOnClose);
  failures_->setTextFormat(Qt::PlainText);
  failures_->open();
}

bool MainWindow::AnyRunning() const {
  for (const auto& session : sessions_) {
    if (session->IsRunning()) return true;
  }
  return false;
}

void MainWindow::RefreshAwake() { awake_.SetRunning(AnyRunning()); }

bool MainWindow::MayClose() {
  std::vector<ClosingObstacle> runs;
  for (const auto& session : sessions_) {
    if (!session->IsRunning()) continue;
    runs.push_back({QString::fromStdString(session->entry().Title()),
                    session->run() != nullptr ? DescribeLoss(*session->run())
                                              : QStringLiteral("The tray is being started.")});
  }
  std::vector<ClosingObstacle> screens;
  for (const CloseRefusal& refusal : screens_->Refusals()) {
    screens.push_back({refusal.label, refusal.reason});
  }
  const std::optional<ClosingQuestion> question = AskBeforeClosing(runs, screens);
  if (!question) return true;
  QMessageBox box(QMessageBox::Warning, QStringLiteral("Close TORVELL"), question->text,
                  QMessageBox::NoButton, this);
  box.setInformativeText(question->details);
  QAbstractButton* close = box.addButton(question->closeAnyway, QMessageBox::DestructiveRole);
  QPushButton* back = box.addButton(question->keepOpen, QMessageBox::RejectRole);
  box.setDefaultButton(back);
  box.setEscapeButton(back);
  box.exec();
  return box.clickedButton() == close;
}

void MainWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  if (closing_ || askingToClose_) return;
  // A second request to close, such as Ctrl+C, must not ask again.
  askingToClose_ = true;
  const bool agreed = MayClose();
  askingToClose_ = false;
  if (agreed && !closing_) BeginClosing();
}

void MainWindow::BeginClosing() {
  closing_ = true;
  // Close the screens first, so that what they have set moving does not go on until the runs end.
  screens_->CloseAll();
  // Further input would come too late.
  centralWidget()->setEnabled(false);
  menuBar()->setEnabled(false);
  statusBar()->showMessage(QStringLiteral("Closing ..."));
  // The end of the event loop answers every open question, so the runs must end before it: an
  // injection prompt that is answered while its run goes on would start an injection.
  auto left = std::make_shared<size_t>(sessions_.size() + 1);
  const auto done = [this, left] {
    if (--*left == 0) Q_EMIT Closed();
  };
  for (const auto& session : sessions_) session->EndRun(done);
  done();
}

std::function<void()> MainWindow::TakeClosingWork() {
  panel_->CloseStatusWindow();
  // This also covers a window that is destroyed without having been closed by the user.
  for (const auto& session : sessions_) session->EndRun([] {});
  screens_->CloseAll();
  return [this] {
    // The actions of the screens end while the instruments still exist.
    screens_->Finish();
    worker_->Finish();
    for (const auto& session : sessions_) session->Finish();
  };
}

}  // namespace torvell
