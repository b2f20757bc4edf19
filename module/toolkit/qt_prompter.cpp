#include "module/toolkit/qt_prompter.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "module/toolkit/gui_thread.h"
#include "module/toolkit/pause_tray_query.h"
#include "module/toolkit/run_dialog.h"

namespace rvx {
namespace {

QMessageBox::Icon ToBoxIcon(platform::MessageIcon icon) {
  switch (icon) {
    case platform::MessageIcon::Information:
      return QMessageBox::Information;
    case platform::MessageIcon::Question:
      return QMessageBox::Question;
    case platform::MessageIcon::Warning:
      return QMessageBox::Warning;
  }
  return QMessageBox::NoIcon;
}

constexpr int kLookInterval = 50;  // ms, of checks of the events that withdraw a question

bool IsSet(std::span<platform::Event* const> events) {
  return std::any_of(events.begin(), events.end(),
                     [](platform::Event* event) { return event->TryWait(); });
}

std::unique_ptr<QDialog> MakeBox(const std::string& text, platform::MessageButtons buttons,
                                 platform::MessageIcon icon) {
  auto box = std::make_unique<QMessageBox>(QApplication::activeWindow());
  box->setWindowTitle(QStringLiteral("RVX"));
  box->setTextFormat(Qt::PlainText);
  box->setText(QString::fromStdString(text));
  box->setIcon(ToBoxIcon(icon));
  if (buttons == platform::MessageButtons::YesNo) {
    box->setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    // Enter and Escape both confirm nothing.
    box->setDefaultButton(QMessageBox::No);
    box->setEscapeButton(QMessageBox::No);
  }
  return box;
}

}  // namespace

// A question of another thread, until it is answered.
struct QtPrompter::Question {
  Question(DialogMaker ownMake, AnswerReader ownRead)
      : make(std::move(ownMake)), read(std::move(ownRead)) {}

  const DialogMaker make;
  platform::Event answered{"question answered", platform::Event::Mode::ManualReset};
  QPointer<QDialog> dialog;  // GUI thread

  platform::PlainLock lock{"question", platform::kLeafRank};
  // It writes to the stack of the asking thread, so it is null once that has stopped waiting.
  AnswerReader read GUARDED_BY(lock);
};

void QtPrompter::Close() {
  std::vector<std::shared_ptr<Question>> standing;
  {
    platform::PlainGuard guard(lock_);
    closed_ = true;
    standing = standing_;
  }
  for (const auto& question : standing) {
    delete question->dialog;
    question->answered.Set();
  }
}

platform::MessageAnswer QtPrompter::ShowMessage(const std::string& text,
                                                platform::MessageButtons buttons,
                                                platform::MessageIcon icon) {
  return *ShowMessageUntil(text, buttons, icon, {});
}

std::optional<platform::MessageAnswer> QtPrompter::ShowMessageUntil(
    const std::string& text, platform::MessageButtons buttons, platform::MessageIcon icon,
    Withdrawal withdrawal) {
  platform::MessageAnswer answer = buttons == platform::MessageButtons::YesNo
                                       ? platform::MessageAnswer::No
                                       : platform::MessageAnswer::Ok;
  const bool stood = Ask([=] { return MakeBox(text, buttons, icon); },
                         [&answer](QDialog&, int result) {
                           if (result == QMessageBox::Yes) answer = platform::MessageAnswer::Yes;
                         },
                         withdrawal);
  return stood ? std::optional(answer) : std::nullopt;
}

std::optional<int> QtPrompter::Choose(const std::string& title,
                                      const std::vector<std::string>& options, int initial) {
  std::optional<int> choice;
  Ask([=] { return std::make_unique<CPauseTrayQuery>(title, options, initial); },
      [&choice](QDialog& dialog, int result) {
        if (result == QDialog::Accepted) choice = static_cast<CPauseTrayQuery&>(dialog).answer();
      });
  return choice;
}

void QtPrompter::Beep() {
  PostToGuiThread([] { QApplication::beep(); });
}

bool QtPrompter::Ask(const DialogMaker& make, const AnswerReader& read, Withdrawal withdrawal) {
  {
    platform::PlainGuard guard(lock_);
    if (closed_) return true;
  }
  return IsGuiThread() ? AskHere(make, read, withdrawal) : AskBeside(make, read, withdrawal);
}

bool QtPrompter::AskHere(const DialogMaker& make, const AnswerReader& read, Withdrawal withdrawal) {
  // Its parent may be destroyed while it is open, and the dialog with it.
  const QPointer<QDialog> dialog = make().release();
  bool takenBack = false;
  QTimer look;
  if (!withdrawal.empty()) {
    QObject::connect(&look, &QTimer::timeout, dialog, [&dialog, &takenBack, withdrawal] {
      takenBack = IsSet(withdrawal);
      if (takenBack) dialog->reject();
    });
    look.start(kLookInterval);
  }
  const int result = dialog->exec();
  // The event that withdrew the question may also have destroyed its parent window.
  if (!dialog) takenBack = IsSet(withdrawal);
  if (dialog && !takenBack) read(*dialog, result);
  delete dialog;
  return !takenBack;
}

bool QtPrompter::AskBeside(const DialogMaker& make, const AnswerReader& read,
                           Withdrawal withdrawal) {
  const auto question = std::make_shared<Question>(make, read);
  {
    platform::PlainGuard guard(lock_);
    if (closed_) return true;
    standing_.push_back(question);
  }
  PostToGuiThread([question] { Show(question); });
  std::vector<platform::Event*> events{&question->answered};
  events.insert(events.end(), withdrawal.begin(), withdrawal.end());
  const bool takenBack = platform::WaitForAny(events, platform::Deadline::Never()) != 0;
  {
    platform::PlainGuard guard(question->lock);
    question->read = nullptr;
  }
  if (takenBack) {
    question->answered.Set();
    PostToGuiThread([question] { delete question->dialog; });
  }
  platform::PlainGuard guard(lock_);
  std::erase(standing_, question);
  return !takenBack;
}

void QtPrompter::Show(const std::shared_ptr<Question>& question) {
  if (question->answered.TryWait()) return;  // dropped meanwhile
  QDialog* dialog = question->make().release();
  question->dialog = dialog;
  // No window owns it: the close of a window must not destroy an unanswered question.
  dialog->setParent(nullptr, dialog->windowFlags() | Qt::WindowStaysOnTopHint);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  // While a modal window is open, only another modal one can be used.
  dialog->setWindowModality(QApplication::activeModalWidget() != nullptr ? Qt::ApplicationModal
                                                                         : Qt::NonModal);
  QObject::connect(dialog, &QDialog::finished, dialog, [question, dialog](int result) {
    {
      platform::PlainGuard guard(question->lock);
      if (question->read) question->read(*dialog, result);
    }
    question->answered.Set();
  });
  dialog->show();
  dialog->raise();
  dialog->activateWindow();
}

void ShowFailure(const std::string& text) {
  platform::Prompter& prompter = platform::GetPrompter();
  prompter.Beep();
  prompter.ShowMessage(text, platform::MessageButtons::Ok, platform::MessageIcon::Warning);
}

}  // namespace rvx
