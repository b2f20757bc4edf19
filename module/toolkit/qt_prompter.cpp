#include "module/toolkit/qt_prompter.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>

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
  platform::Event answered{"question answered", platform::Event::Mode::ManualReset};
  QPointer<QDialog> dialog;  // GUI thread
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
  platform::MessageAnswer answer = buttons == platform::MessageButtons::YesNo
                                       ? platform::MessageAnswer::No
                                       : platform::MessageAnswer::Ok;
  Ask([&] { return MakeBox(text, buttons, icon); },
      [&answer](QDialog&, int result) {
        if (result == QMessageBox::Yes) answer = platform::MessageAnswer::Yes;
      });
  return answer;
}

std::optional<int> QtPrompter::Choose(const std::string& title,
                                      const std::vector<std::string>& options, int initial) {
  std::optional<int> choice;
  Ask([&] { return std::make_unique<CPauseTrayQuery>(title, options, initial); },
      [&choice](QDialog& dialog, int result) {
        if (result == QDialog::Accepted) choice = static_cast<CPauseTrayQuery&>(dialog).answer();
      });
  return choice;
}

void QtPrompter::Beep() {
  PostToGuiThread([] { QApplication::beep(); });
}

void QtPrompter::Ask(const DialogMaker& make, const AnswerReader& read) {
  {
    platform::PlainGuard guard(lock_);
    if (closed_) return;
  }
  if (IsGuiThread()) {
    RunDialog<QDialog>(make(), read);
    return;
  }
  auto question = std::make_shared<Question>();
  {
    platform::PlainGuard guard(lock_);
    if (closed_) return;
    standing_.push_back(question);
  }
  PostToGuiThread([question, &make, &read] { Show(question, make, read); });
  question->answered.Wait();
  platform::PlainGuard guard(lock_);
  std::erase(standing_, question);
}

void QtPrompter::Show(const std::shared_ptr<Question>& question, const DialogMaker& make,
                      const AnswerReader& read) {
  if (question->answered.TryWait()) return;  // dropped meanwhile; `make` and `read` are gone
  QDialog* dialog = make().release();
  question->dialog = dialog;
  // No window owns it: one that is closed must not take an unanswered question with it.
  dialog->setParent(nullptr, dialog->windowFlags() | Qt::WindowStaysOnTopHint);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  // Above a modal window only a modal one can be used.
  dialog->setWindowModality(QApplication::activeModalWidget() != nullptr ? Qt::ApplicationModal
                                                                         : Qt::NonModal);
  QObject::connect(dialog, &QDialog::finished, dialog, [question, dialog, &read](int result) {
    if (question->answered.TryWait()) return;
    read(*dialog, result);
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
