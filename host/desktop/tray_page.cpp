#include "host/desktop/tray_page.h"

#include <QAction>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "host/desktop/banner.h"
#include "host/desktop/instrument_session.h"
#include "host/desktop/run_progress.h"
#include "host/desktop/save_dialog.h"
#include "host/desktop/tray_view.h"
#include "host/tray/number_text.h"

namespace torvell {
namespace {

constexpr int kProgressRefresh = 500;  // ms

const QString& TrayFiles() {
  static const QString kind = QStringLiteral("Tray files");
  return kind;
}

bool IsMoreToCome(const RunState& run) {
  return std::any_of(run.positions().begin(), run.positions().end(),
                     [](const RunPosition& position) { return !position.started; });
}

// Returns why the tray can't start, or what it waits for; shown in one place below the buttons.
QString HintText(const InstrumentSituation& situation, const Offer& start, const RunState* run) {
  if (situation.paused) return QStringLiteral("The tray is paused. Resume it, or abort it.");
  // After the last sample there is no further sample before which the tray could pause.
  if (situation.running && situation.pauseRequested && run != nullptr && IsMoreToCome(*run)) {
    return QStringLiteral("The tray will pause.");
  }
  if (situation.preparing) return QStringLiteral("Preparing: the cell is being cooled ...");
  if (!start.shown) return {};
  return start.why.isEmpty() ? QStringLiteral("The tray is ready to start.") : start.why;
}

}  // namespace

QAction* TrayPage::Make(const QString& text, const QKeySequence& key, std::function<void()> does) {
  auto* action = new QAction(text, this);
  action->setShortcut(key);
  action->setShortcutContext(Qt::WindowShortcut);
  connect(action, &QAction::triggered, this, [does = std::move(does)] { does(); });
  addAction(action);
  return action;
}

void TrayPage::MakeActions() {
  const auto withSession = [this](void (InstrumentSession::*command)()) {
    return [this, command] {
      if (session_ != nullptr) (session_->*command)();
    };
  };
  start_ = Make(QStringLiteral("&Start"), Qt::Key_F5, withSession(&InstrumentSession::Start));
  pauseAfter_ = Make(QStringLiteral("Pause &After This Sample"), Qt::Key_F6,
                     withSession(&InstrumentSession::PauseAfterSample));
  pauseNow_ = Make(QStringLiteral("Pause &Now"), QKeySequence(Qt::SHIFT | Qt::Key_F6),
                   withSession(&InstrumentSession::PauseNow));
  resume_ = Make(QStringLiteral("&Resume"), Qt::Key_F7, withSession(&InstrumentSession::Resume));
  abort_ = Make(QStringLiteral("A&bort ..."), QKeySequence(Qt::SHIFT | Qt::Key_F5),
                [this] { AskAbort(); });
  prepare_ = Make(QStringLiteral("&Prepare"), {}, withSession(&InstrumentSession::Prepare));
  newTray_ = Make(QStringLiteral("New &Tray"), QKeySequence::New,
                  withSession(&InstrumentSession::AcknowledgeSummary));
  undo_ = Make(QStringLiteral("&Undo"), QKeySequence::Undo, withSession(&InstrumentSession::Undo));

  const auto withView = [this](void (TrayView::*command)()) {
    return [this, command] { (view_->*command)(); };
  };
  edit_ = Make(QStringLiteral("&Edit ..."), QKeySequence(Qt::CTRL | Qt::Key_E),
               withView(&TrayView::EditPosition));
  copy_ = Make(QStringLiteral("&Copy"), QKeySequence::Copy, withView(&TrayView::Copy));
  cut_ = Make(QStringLiteral("Cu&t"), QKeySequence::Cut, withView(&TrayView::Cut));
  paste_ = Make(QStringLiteral("&Paste"), QKeySequence::Paste, withView(&TrayView::Paste));
  clear_ = Make(QStringLiteral("C&lear"), QKeySequence::Delete, withView(&TrayView::Clear));
  fillDown_ = Make(QStringLiteral("Fill &Down"), QKeySequence(Qt::CTRL | Qt::Key_D),
                   withView(&TrayView::FillDown));
  moveUp_ = Make(QStringLiteral("&Move Up"), QKeySequence(Qt::ALT | Qt::Key_Up),
                 withView(&TrayView::MoveUp));
  moveDown_ = Make(QStringLiteral("Move Do&wn"), QKeySequence(Qt::ALT | Qt::Key_Down),
                   withView(&TrayView::MoveDown));
  // The clipboard's keys work only while the table has the focus; other tables have their own.
  for (QAction* action : {copy_, cut_, paste_, clear_, fillDown_}) {
    action->setShortcutContext(Qt::WidgetShortcut);
    removeAction(action);
    view_->addAction(action);
  }
  load_ = Make(QStringLiteral("L&oad ..."), QKeySequence::Open, [this] { Load(); });
  save_ = Make(QStringLiteral("&Save As ..."), QKeySequence::Save, [this] { Save(); });
  addMenu_ = new QMenu(QStringLiteral("&Add"), this);
}

void TrayPage::MakeToolBar() {
  auto* layout = qobject_cast<QVBoxLayout*>(this->layout());
  auto* row = new QHBoxLayout();
  row->setSpacing(kSmallGap);
  const auto button = [this, row](QAction* action) {
    auto* made = new QPushButton(this);
    // Without the mnemonic of the menu, which would conflict with it; the action has its own key.
    made->setText(action->text().remove(QLatin1Char('&')));
    made->setAutoDefault(false);
    connect(made, &QPushButton::clicked, action, &QAction::trigger);
    row->addWidget(made);
    return made;
  };
  startButton_ = button(start_);
  resumeButton_ = button(resume_);
  pauseButton_ = new QToolButton(this);
  pauseButton_->setText(QStringLiteral("Pause"));
  pauseButton_->setPopupMode(QToolButton::InstantPopup);
  auto* pauses = new QMenu(pauseButton_);
  pauses->addAction(pauseAfter_);
  pauses->addAction(pauseNow_);
  pauseButton_->setMenu(pauses);
  row->addWidget(pauseButton_);
  abortButton_ = button(abort_);
  prepareButton_ = button(prepare_);
  row->addSpacing(kGap);
  addButton_ = new QToolButton(this);
  addButton_->setText(QStringLiteral("Add sample"));
  addButton_->setPopupMode(QToolButton::InstantPopup);
  addButton_->setMenu(addMenu_);
  row->addWidget(addButton_);
  editButton_ = button(edit_);
  for (QToolButton* each : {pauseButton_, addButton_}) {
    each->setToolButtonStyle(Qt::ToolButtonTextOnly);
    each->setMinimumHeight(startButton_->sizeHint().height());
    each->setMinimumWidth(startButton_->sizeHint().width());
    each->setFocusPolicy(Qt::StrongFocus);
  }
  hint_ = new QLabel(this);
  hint_->setTextFormat(Qt::PlainText);
  hint_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  QPalette quiet = hint_->palette();
  quiet.setColor(QPalette::WindowText, Colors().quiet);
  hint_->setPalette(quiet);
  row->addStretch(1);
  layout->addLayout(row);
  layout->addWidget(hint_);
}

TrayPage::TrayPage(QWidget* parent) : QWidget(parent), view_(new TrayView(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(kSmallGap);
  MakeActions();
  MakeToolBar();
  summary_ = new Banner(Banner::Tone::Quiet, this);
  connect(summary_->AddButton(QStringLiteral("Export ...")), &QPushButton::clicked, this,
          &TrayPage::ExportAsked);
  connect(summary_->AddButton(QStringLiteral("New Tray")), &QPushButton::clicked, newTray_,
          &QAction::trigger);
  layout->addWidget(summary_);
  layout->addWidget(view_, 1);

  progress_ = new QWidget(this);
  auto* row = new QHBoxLayout(progress_);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(kGap);
  bar_ = new QProgressBar(progress_);
  bar_->setRange(0, 100);
  bar_->setTextVisible(false);
  bar_->setFixedHeight(10);
  bar_->setAccessibleName(QStringLiteral("Progress of the run"));
  done_ = new QLabel(progress_);
  left_ = new QLabel(progress_);
  row->addWidget(done_);
  row->addWidget(bar_, 1);
  row->addWidget(left_, 1);
  layout->addWidget(progress_);

  view_->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(view_, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
    QMenu menu(this);
    FillTrayMenu(menu);
    menu.exec(view_->viewport()->mapToGlobal(at));
  });
  connect(view_, &TrayView::Notice, this, &TrayPage::Notice);
  auto* timer = new QTimer(this);
  connect(timer, &QTimer::timeout, this, &TrayPage::RefreshProgress);
  timer->start(kProgressRefresh);
  Refresh();
}

void TrayPage::SetSession(InstrumentSession* session) {
  if (session_ != nullptr) disconnect(session_, nullptr, this, nullptr);
  session_ = session;
  view_->SetSession(session);
  if (session_ != nullptr) {
    connect(session_, &InstrumentSession::StateChanged, this, &TrayPage::Refresh);
  }
  Refresh();
}

void TrayPage::SetLevel(int32_t level) {
  level_ = level;
  Refresh();
}

void TrayPage::SetSampleKinds(const std::vector<std::pair<int, QString>>& kinds) {
  addMenu_->clear();
  for (const auto& [kind, label] : kinds) {
    QAction* action = addMenu_->addAction(label);
    // Insert adds the first kind, which is by far the most frequent.
    if (addMenu_->actions().size() == 1) action->setShortcut(Qt::Key_Insert);
    connect(action, &QAction::triggered, this, [this, sampleKind = kind] {
      if (session_ == nullptr) return;
      const std::vector<int> positions = view_->SelectedPositions();
      if (positions.empty()) {
        Q_EMIT Notice(QStringLiteral("No position is selected. Select empty ones first."));
        return;
      }
      session_->AddSample(sampleKind, positions);
    });
  }
}

void TrayPage::FillRunMenu(QMenu& menu) {
  for (QAction* action : {start_, pauseAfter_, pauseNow_, resume_, abort_}) menu.addAction(action);
  menu.addSeparator();
  menu.addAction(prepare_);
  menu.addAction(newTray_);
}

void TrayPage::FillTrayMenu(QMenu& menu) {
  menu.addMenu(addMenu_);
  menu.addAction(edit_);
  menu.addSeparator();
  for (QAction* action : {undo_, cut_, copy_, paste_, clear_, fillDown_}) menu.addAction(action);
  menu.addSeparator();
  menu.addAction(moveUp_);
  menu.addAction(moveDown_);
  menu.addSeparator();
  menu.addAction(load_);
  menu.addAction(save_);
}

void TrayPage::Apply(const Offer& offer, QAction* action, QWidget* button) {
  action->setEnabled(offer.shown && offer.enabled);
  action->setToolTip(offer.why);
  if (button == nullptr) return;
  button->setVisible(offer.shown);
  button->setEnabled(offer.enabled);
  button->setToolTip(offer.why);
}

void TrayPage::Refresh() {
  InstrumentSituation situation;
  if (session_ != nullptr) situation = session_->Situation();
  situation.level = level_;
  RunOffers offers = session_ != nullptr ? OffersOf(situation) : RunOffers();
  Apply(offers.start, start_, startButton_);
  Apply(offers.resume, resume_, resumeButton_);
  Apply(offers.pauseNow, pauseNow_, nullptr);
  Apply(offers.pauseAfter, pauseAfter_, nullptr);
  pauseButton_->setVisible(offers.pauseNow.shown);
  pauseButton_->setEnabled(offers.pauseNow.enabled);
  pauseButton_->setToolTip(offers.pauseNow.why);
  Apply(offers.abort, abort_, abortButton_);
  Apply(offers.prepare, prepare_, prepareButton_);
  Apply(offers.newTray, newTray_, nullptr);
  const Offer& edit = offers.edit;
  for (QAction* action : {edit_, cut_, paste_, clear_, fillDown_, moveUp_, moveDown_, load_}) {
    Apply(edit, action, nullptr);
  }
  Apply(edit, undo_, nullptr);
  if (session_ == nullptr || !session_->CanUndo()) undo_->setEnabled(false);
  for (QWidget* button : {static_cast<QWidget*>(addButton_), static_cast<QWidget*>(editButton_)}) {
    button->setVisible(!situation.running && !situation.summaryOpen);
    button->setEnabled(edit.enabled);
    button->setToolTip(edit.why);
  }
  addMenu_->setEnabled(edit.enabled);
  view_->SetEditable(edit.enabled);
  const QString hint =
      HintText(situation, offers.start, session_ != nullptr ? session_->run() : nullptr);
  hint_->setText(fontMetrics().elidedText(hint, Qt::ElideRight, std::max(200, width() - kGap)));
  hint_->setToolTip(hint);
  RefreshProgress();
}

void TrayPage::RefreshProgress() {
  const RunState* run = session_ != nullptr ? session_->run() : nullptr;
  const bool over = session_ != nullptr && session_->summary().has_value();
  summary_->setVisible(over);
  if (over) {
    const QString text = DescribeSummary(*session_->summary());
    const bool good = session_->summary()->samples >= session_->summary()->samplesDue;
    if (text != summary_->text()) {
      summary_->SetText(ShapeIcon(good ? Shape::Done : Shape::Failed), text);
    }
  }
  progress_->setVisible(session_ != nullptr && !over);
  bar_->setVisible(run != nullptr);
  left_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  if (run == nullptr) {
    const int seconds = session_ != nullptr ? session_->EstimatedSeconds() : 0;
    const int filled = session_ != nullptr ? session_->Situation().filled : 0;
    done_->setText(QStringLiteral("%1 of %2 positions filled")
                       .arg(filled)
                       .arg(session_ != nullptr ? session_->traySize() : 0));
    left_->setText(
        seconds > 0
            ? QStringLiteral("takes about %1").arg(QString::fromStdString(DurationText(seconds)))
            : QString());
    return;
  }
  const ProgressText text = DescribeProgress(*run, platform::MonotonicTime(), platform::LocalNow());
  bar_->setValue(text.percent);
  done_->setText(text.done);
  left_->setText(text.left);
}

void TrayPage::AskAbort() {
  if (session_ == nullptr || session_->run() == nullptr) return;
  QMessageBox box(QMessageBox::Warning, QStringLiteral("Abort the run"),
                  QStringLiteral("Abort the run?"), QMessageBox::NoButton, this);
  box.setInformativeText(DescribeLoss(*session_->run()));
  QAbstractButton* abort =
      box.addButton(QStringLiteral("Abort the Run"), QMessageBox::DestructiveRole);
  QPushButton* back = box.addButton(QStringLiteral("Keep Running"), QMessageBox::RejectRole);
  box.setDefaultButton(back);
  box.setEscapeButton(back);
  box.exec();
  // The run may be over by now.
  if (box.clickedButton() == abort && session_ != nullptr && session_->IsRunning()) {
    session_->Abort();
  }
}

void TrayPage::Load() {
  const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("Load a tray"), QString(),
                                                    CsvFilter(TrayFiles()));
  if (!path.isEmpty() && session_ != nullptr) session_->LoadFile(path);
}

void TrayPage::Save() {
  const QString path = AskForCsvName(this, QStringLiteral("Save the tray"), TrayFiles());
  if (!path.isEmpty() && session_ != nullptr) session_->SaveFile(path);
}

}  // namespace torvell
