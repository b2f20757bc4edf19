#include "host/desktop/prompter.h"

#include <QApplication>
#include <QButtonGroup>
#include <QDialog>
#include <QDialogButtonBox>
#include <QMessageBox>
#include <QRadioButton>
#include <QVBoxLayout>

namespace torvell {
namespace {

QMessageBox::Icon IconOf(platform::MessageIcon icon) {
  switch (icon) {
    case platform::MessageIcon::Information:
      return QMessageBox::Information;
    case platform::MessageIcon::Question:
      return QMessageBox::Question;
    case platform::MessageIcon::Warning:
      return QMessageBox::Warning;
  }
  return QMessageBox::Information;
}

bool AskOnScreen(const std::string& text, bool question, platform::MessageIcon icon) {
  QMessageBox box(IconOf(icon), QStringLiteral("TORVELL"), QString::fromStdString(text),
                  question ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok,
                  QApplication::activeWindow());
  // The answer that changes nothing is the one that a careless key gives.
  if (question) box.setDefaultButton(QMessageBox::No);
  return box.exec() == QMessageBox::Yes;
}

std::optional<int> ChooseOnScreen(const std::string& title, const std::vector<std::string>& options,
                                  int initial) {
  QDialog dialog(QApplication::activeWindow());
  dialog.setWindowTitle(QString::fromStdString(title));
  auto* layout = new QVBoxLayout(&dialog);
  QButtonGroup group;
  for (size_t i = 0; i < options.size(); ++i) {
    auto* button = new QRadioButton(QString::fromStdString(options[i]), &dialog);
    button->setChecked(static_cast<int>(i) == initial);
    group.addButton(button, static_cast<int>(i));
    layout->addWidget(button);
  }
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  layout->addWidget(buttons);
  if (dialog.exec() != QDialog::Accepted || group.checkedId() < 0) return std::nullopt;
  return group.checkedId();
}

}  // namespace

platform::MessageAnswer WindowPrompter::ShowMessage(const std::string& text,
                                                    platform::MessageButtons buttons,
                                                    platform::MessageIcon icon) {
  const bool question = buttons == platform::MessageButtons::YesNo;
  {
    platform::PlainGuard guard(lock_);
    if (question && yes_ > 0) return platform::MessageAnswer::Yes;
  }
  bool yes = false;
  gui_.Run([&] { yes = AskOnScreen(text, question, icon); });
  if (!question) return platform::MessageAnswer::Ok;
  return yes ? platform::MessageAnswer::Yes : platform::MessageAnswer::No;
}

std::optional<int> WindowPrompter::Choose(const std::string& title,
                                          const std::vector<std::string>& options, int initial) {
  std::optional<int> choice;
  gui_.Run([&] { choice = ChooseOnScreen(title, options, initial); });
  return choice;
}

void WindowPrompter::Beep() {
  gui_.Post([] { QApplication::beep(); });
}

void WindowPrompter::CountYes(int change) {
  platform::PlainGuard guard(lock_);
  yes_ += change;
}

}  // namespace torvell
