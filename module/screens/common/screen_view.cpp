#include "module/screens/common/screen_view.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QStatusBar>
#include <algorithm>

#include "boundary/host.h"
#include "module/execution/screen_failure.h"
#include "module/toolkit/child_frame.h"
#include "module/toolkit/help.h"

namespace rvx {

CScreenView::CScreenView(const ScreenRequest& request)
    : request_(request),
      ended_(
          std::make_shared<platform::Event>("screen ended", platform::Event::Mode::ManualReset)) {
  timer_.setInterval(0);
  connect(&timer_, &QTimer::timeout, this, [this] { RunTick(); });
}

CScreenView::~CScreenView() {
  ended_->Set();
  motion().End();
}

int32_t CScreenView::QueryClose() {
  std::string refusal;
  Guard([&] { refusal = GetCloseRefusal(); });
  if (refusal.empty()) return 0;
  platform::GetPrompter().Beep();
  SetStatusLine(refusal);
  return 1;
}

void CScreenView::BindButtons(int close, int byDefault) {
  if (auto* button = FindControl<QAbstractButton>(*this, close)) {
    On(button, &QAbstractButton::clicked, [this](bool) { CloseScreen(); });
    closesByEscape_ = true;
  }
  if (auto* button = FindControl<QAbstractButton>(*this, kHelpId)) {
    On(button, &QAbstractButton::clicked, [this](bool) { ShowHelp(GetHelpTopic()); });
  }
  defaultButton_ = FindControl<QAbstractButton>(*this, byDefault);
}

void CScreenView::RefreshOnChange(std::function<void()> refresh) {
  monitor_ = std::make_unique<ChangeMonitor>(
      [this, refresh = std::move(refresh)] { Guard([&] { refresh(); }); });
}

void CScreenView::Work(std::function<void()> job, std::function<void()> done,
                       std::function<void(const std::string&)> failed) {
  if (!worker_) worker_ = std::make_unique<ScreenWorker>(instrument());
  worker_->Do(
      std::move(job), [this, done = std::move(done)] { Guard([&] { done(); }); },
      [this, failed = std::move(failed)](const std::string& reason) {
        Guard([&] { failed(reason); });
      });
}

bool CScreenView::AskInstrument(const std::function<void(CommandClient*)>& send,
                                platform::Milliseconds timeout,
                                std::function<void(const CommandResult&)> done) {
  if (!replies_) replies_ = std::make_unique<ReplyClient>(instrument());
  return replies_->Send(send, timeout, [this, done = std::move(done)](const CommandResult& result) {
    Guard([&] { done(result); });
  });
}

std::optional<platform::MessageAnswer> CScreenView::Ask(const std::string& text,
                                                        platform::MessageButtons buttons,
                                                        platform::MessageIcon icon) {
  // This object may be destroyed while the user is asked, and the run of its action may end. What
  // withdraws the question is kept alive here until the prompter has returned.
  const std::shared_ptr<platform::Event> stopped = request_.stopped;
  const std::shared_ptr<platform::Event> ended = ended_;
  const InstrumentUse use(instrument());
  platform::Event* const ends[] = {stopped.get(), ended.get(), &instrument().closingEvent()};
  const auto answer = platform::GetPrompter().ShowMessageUntil(text, buttons, icon, ends);
  const bool over = std::any_of(std::begin(ends), std::end(ends),
                                [](platform::Event* end) { return end->TryWait(); });
  return over ? std::nullopt : answer;
}

void CScreenView::SetStatusLine(const std::string& text) {
  statusLine_ = QString::fromStdString(text);
  ShowStatusLine();
}

void CScreenView::ShowStatusLine() {
  // In the constructor there is no frame yet.
  if (auto* frame = dynamic_cast<CChildFrame*>(window())) {
    frame->statusBar()->showMessage(statusLine_);
  }
}

void CScreenView::CloseScreen() { window()->close(); }

void CScreenView::Guard(const std::function<void()>& code) {
  // The code may wait for the user, and the screen and its instrument may be destroyed when it
  // returns.
  const QPointer<CScreenView> self = this;
  const std::string label = request_.label;
  try {
    code();
  } catch (...) {
    const std::string reason = DescribeRaised();
    if (self) {
      self->Fail(reason);
    } else {
      ReportScreenFailure(nullptr, label, reason);
    }
  }
}

void CScreenView::Fail(const std::string& reason) {
  if (std::exchange(failed_, true)) return;
  ended_->Set();
  timer_.stop();
  motion().End();
  platform::GetPrompter().Beep();
  ReportScreenFailure(&instrument(), label(), reason);
  if (auto* frame = dynamic_cast<CChildFrame*>(window())) frame->End();
}

void CScreenView::RunTick() {
  // A tick may ask the user something, and the timer goes on meanwhile.
  if (failed_ || ticking_ || instrument().closingEvent().TryWait()) return;
  const QPointer<CScreenView> self = this;
  ticking_ = true;
  Guard([this] { Tick(GetSecurityManager()->GetAccessLevel()); });
  if (self) ticking_ = false;
}

bool CScreenView::event(QEvent* event) {
  bool handled = true;
  Guard([&] { handled = CFormView::event(event); });
  return handled;
}

void CScreenView::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Escape:
      if (closesByEscape_) {
        CloseScreen();
        return;
      }
      break;
    case Qt::Key_Return:
    case Qt::Key_Enter: {
      auto* focused = dynamic_cast<QAbstractButton*>(QApplication::focusWidget());
      QAbstractButton* const button =
          focused != nullptr && isAncestorOf(focused) ? focused : defaultButton_.data();
      if (button != nullptr && button->isEnabled() && button->isVisible()) {
        button->click();
        return;
      }
      break;
    }
    default:
      break;
  }
  CFormView::keyPressEvent(event);
}

void CScreenView::showEvent(QShowEvent* event) {
  CFormView::showEvent(event);
  ShowStatusLine();
  if (std::exchange(shown_, true)) return;
  // Posted: a tick may ask the user something, and this object may be destroyed meanwhile, which
  // the code that is showing the frame would not survive.
  QTimer::singleShot(0, this, [this] {
    if (timer_.interval() > 0 && !failed_) timer_.start();
    RunTick();
  });
}

}  // namespace rvx
