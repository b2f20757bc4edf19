#include "host/desktop/instrument_panel.h"

#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

#include "host/desktop/gui_thread.h"
#include "host/desktop/instrument_session.h"

namespace torvell {
namespace {

constexpr int kPanelWidth = 208;
constexpr int kIconSide = 16;

QString NameOf(rvx::ViscometerInstrument& instrument, const rvx::InstrumentIdentity& identity) {
  const QString name = QString::fromStdString(instrument.GetInstrumentId());
  return name.isEmpty() ? QString::fromStdString(identity.model) : name;
}

}  // namespace

InstrumentCard::InstrumentCard(InstrumentSession& session, QWidget* parent)
    : QFrame(parent),
      session_(session),
      name_(new QLabel(this)),
      place_(new QLabel(this)),
      icon_(new QLabel(this)),
      word_(new QLabel(this)) {
  setFocusPolicy(Qt::TabFocus);
  setCursor(Qt::PointingHandCursor);
  auto* layout = new QGridLayout(this);
  layout->setContentsMargins(kGap, kGap, kGap, kGap);
  layout->setHorizontalSpacing(kSmallGap);
  layout->setVerticalSpacing(2);
  layout->addWidget(name_, 0, 0, 1, 2);
  layout->addWidget(place_, 1, 0, 1, 2);
  layout->addWidget(icon_, 2, 0);
  layout->addWidget(word_, 2, 1);
  layout->setColumnStretch(1, 1);
  QFont bold = font();
  bold.setBold(true);
  name_->setFont(bold);
  word_->setFont(bold);
  QPalette quiet = place_->palette();
  quiet.setColor(QPalette::WindowText, Colors().quiet);
  place_->setPalette(quiet);
  for (QLabel* label : {name_, place_, word_}) label->setTextFormat(Qt::PlainText);
  setAutoFillBackground(true);
  Refresh();
}

void InstrumentCard::SetSelected(bool selected) {
  QPalette colors = palette();
  colors.setColor(QPalette::Window, selected ? Colors().base : Colors().background);
  setPalette(colors);
  setStyleSheet(selected ? QStringLiteral("torvell--InstrumentCard { border: 1px solid %1;"
                                          " border-left: 3px solid %2; }")
                               .arg(Colors().line.name(), Colors().accent.name())
                         : QStringLiteral("torvell--InstrumentCard { border: 1px solid %1; }")
                               .arg(Colors().line.name()));
}

void InstrumentCard::Refresh() {
  const rvx::InstrumentIdentity& identity = session_.entry().identity;
  rvx::ViscometerInstrument& instrument = *session_.entry().instrument;
  const InstrumentSituation situation = session_.Situation();
  const StateWord word = WordOf(situation);
  const QString state = StateText(situation, session_.traySize());
  name_->setText(NameOf(instrument, identity));
  place_->setText(QStringLiteral("%1, address %2")
                      .arg(QString::fromStdString(identity.portName))
                      .arg(identity.address));
  icon_->setPixmap(
      ShapeIcon(StateShape(word), word == StateWord::Running ? Colors().accent : Colors().text)
          .pixmap(QSize(kIconSide, kIconSide), devicePixelRatioF()));
  word_->setText(state);
  setToolTip(NotReadyText(situation));
  setAccessibleName(QStringLiteral("%1, %2: %3").arg(name_->text(), place_->text(), state));
}

void InstrumentCard::mousePressEvent(QMouseEvent*) { Q_EMIT Chosen(); }

void InstrumentCard::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return) {
    Q_EMIT Chosen();
    return;
  }
  QFrame::keyPressEvent(event);
}

InstrumentPanel::InstrumentPanel(QWidget* parent)
    : QWidget(parent), place_(new QWidget(this)), age_(new QLabel(this)), empty_(new QLabel(this)) {
  setFixedWidth(kPanelWidth);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(kGap);
  auto* heading = new QLabel(QStringLiteral("Instruments"), this);
  QPalette quiet = heading->palette();
  quiet.setColor(QPalette::WindowText, Colors().quiet);
  heading->setPalette(quiet);
  layout->addWidget(heading);
  cards_ = new QVBoxLayout();
  cards_->setSpacing(kSmallGap);
  layout->addLayout(cards_);
  empty_->setWordWrap(true);
  empty_->setText(QStringLiteral("Looking for instruments ..."));
  layout->addWidget(empty_);
  age_->setPalette(quiet);
  age_->setWordWrap(true);
  age_->hide();
  layout->addWidget(place_);
  layout->addWidget(age_);
  layout->addStretch(1);
}

InstrumentPanel::~InstrumentPanel() { CloseStatusWindow(); }

void InstrumentPanel::SetSessions(const std::vector<InstrumentSession*>& sessions) {
  for (InstrumentCard* card : list_) delete card;
  list_.clear();
  for (InstrumentSession* session : sessions) {
    auto* card = new InstrumentCard(*session, this);
    cards_->addWidget(card);
    list_.push_back(card);
    connect(card, &InstrumentCard::Chosen, this, [this, session] { Q_EMIT Chosen(session); });
    connect(session, &InstrumentSession::StateChanged, card, &InstrumentCard::Refresh);
    connect(session, &InstrumentSession::StateChanged, this, &InstrumentPanel::RefreshAge);
  }
  empty_->setVisible(sessions.empty());
  empty_->setText(
      QStringLiteral("No instrument was found. Set the device of a port with \"torvell "
                     "ports set\", or start with --simulate."));
}

void InstrumentPanel::Select(InstrumentSession* session) {
  selected_ = session;
  for (InstrumentCard* card : list_) card->SetSelected(&card->session() == session);
  ShowStatusWindow();
  RefreshAge();
}

void InstrumentPanel::CloseStatusWindow() {
  if (shown_ != nullptr) shown_->entry().instrument->CloseStatusWindow();
  shown_ = nullptr;
}

void InstrumentPanel::ShowStatusWindow() {
  if (shown_ == selected_) return;
  CloseStatusWindow();
  if (selected_ == nullptr) return;
  QWidget* window =
      ToWidget(selected_->entry().instrument->ShowStatusWindow(ToWindowHandle(place_)));
  shown_ = selected_;
  hasWindow_ = window != nullptr;
  if (window == nullptr) return;
  window->move(0, 0);
  // The module decides the size of its window, so the place for it is given that size.
  place_->setFixedSize(window->size());
}

void InstrumentPanel::RefreshAge() {
  if (selected_ == nullptr) return;
  const InstrumentSituation situation = selected_->Situation();
  const bool stale = IsStale(situation);
  age_->setVisible(stale && !hasWindow_);
  if (!stale || hasWindow_) return;
  age_->setText(
      situation.silence
          ? QStringLiteral("These values are %1 s old.")
                .arg(std::chrono::duration_cast<std::chrono::seconds>(*situation.silence).count())
          : QStringLiteral("No status has come yet."));
}

}  // namespace torvell
