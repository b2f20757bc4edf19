#include "host/desktop/user_dialogs.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "host/desktop/theme.h"

namespace torvell {
namespace {

constexpr int kMaxLetters = 200;

QLineEdit* MakeField(QFormLayout& form, const QString& label, bool secret) {
  auto* edit = new QLineEdit();
  edit->setMaxLength(kMaxLetters);
  edit->setMinimumWidth(260);
  if (secret) edit->setEchoMode(QLineEdit::Password);
  form.addRow(label, edit);
  return edit;
}

QLabel* MakeText(QVBoxLayout& layout, const QString& text) {
  auto* label = new QLabel(text);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setVisible(!text.isEmpty());
  layout.addWidget(label);
  return label;
}

void Refuse(QLabel& label, const QString& text) {
  label.setText(text);
  label.show();
  QApplication::beep();
}

}  // namespace

LoginDialog::LoginDialog(Users& users, Worker& worker, const QString& note,
                         const QString& fixedName, QWidget* parent)
    : QDialog(parent), users_(users), worker_(worker), fixedName_(fixedName) {
  const bool locked = !fixedName.isEmpty();
  setWindowTitle(locked ? QStringLiteral("Locked") : QStringLiteral("Log in"));
  setWindowModality(Qt::ApplicationModal);
  if (locked) setWindowFlag(Qt::WindowCloseButtonHint, false);
  auto* layout = new QVBoxLayout(this);
  layout->setSpacing(kGap);
  MakeText(*layout, note);
  auto* form = new QFormLayout();
  name_ = MakeField(*form, QStringLiteral("&Name"), false);
  password_ = MakeField(*form, QStringLiteral("&Password"), true);
  layout->addLayout(form);
  failure_ = MakeText(*layout, QString());
  auto* buttons = new QDialogButtonBox(this);
  ok_ = buttons->addButton(locked ? QStringLiteral("&Unlock") : QStringLiteral("&Log In"),
                           QDialogButtonBox::AcceptRole);
  if (!locked) buttons->addButton(QDialogButtonBox::Cancel);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &LoginDialog::Try);
  connect(buttons, &QDialogButtonBox::rejected, this, &LoginDialog::reject);
  if (locked) {
    name_->setText(fixedName);
    name_->setReadOnly(true);
    name_->setFocusPolicy(Qt::NoFocus);
    password_->setFocus();
  }
}

void LoginDialog::reject() {
  if (fixedName_.isEmpty()) QDialog::reject();
}

void LoginDialog::Try() {
  const std::string name = name_->text().trimmed().toStdString();
  const std::string password = password_->text().toStdString();
  ok_->setEnabled(false);
  auto right = std::make_shared<bool>(false);
  worker_.Do(
      this,
      [this, name, password, right] {
        *right = users_.Authenticate(name, password);
        if (*right) users_.SetActingUser(name);
      },
      [this, right] {
        ok_->setEnabled(true);
        if (*right) {
          accept();
          return;
        }
        password_->clear();
        password_->setFocus();
        Refuse(*failure_, QStringLiteral("There is no such user, or the password is another. "
                                         "Nothing was changed; try again."));
      },
      [this](const QString& text) {
        ok_->setEnabled(true);
        Refuse(*failure_, text);
      });
}

FirstUserDialog::FirstUserDialog(Users& users, Worker& worker, QWidget* parent)
    : QDialog(parent), users_(users), worker_(worker) {
  setWindowTitle(QStringLiteral("First user"));
  auto* layout = new QVBoxLayout(this);
  layout->setSpacing(kGap);
  MakeText(*layout,
           QStringLiteral("This data folder has no users yet, so everybody may do everything.\n"
                          "Make the first one now: of level 100 (service), who adds the others."));
  auto* form = new QFormLayout();
  name_ = MakeField(*form, QStringLiteral("&Name"), false);
  password_ = MakeField(*form, QStringLiteral("&Password"), true);
  again_ = MakeField(*form, QStringLiteral("The same &again"), true);
  layout->addLayout(form);
  failure_ = MakeText(*layout, QString());
  auto* buttons = new QDialogButtonBox(this);
  ok_ = buttons->addButton(QStringLiteral("&Make the User"), QDialogButtonBox::AcceptRole);
  buttons->addButton(QStringLiteral("&Later"), QDialogButtonBox::RejectRole);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &FirstUserDialog::Try);
  connect(buttons, &QDialogButtonBox::rejected, this, &FirstUserDialog::reject);
}

void FirstUserDialog::Try() {
  if (password_->text() != again_->text()) {
    again_->clear();
    again_->setFocus();
    Refuse(*failure_, QStringLiteral("The two passwords differ. Nothing was done; type the second "
                                     "one again."));
    return;
  }
  ok_->setEnabled(false);
  const std::string name = name_->text().trimmed().toStdString();
  const std::string password = password_->text().toStdString();
  worker_.Do(
      this,
      [this, name, password] {
        users_.Add(name, kLevelService, password);
        users_.SetActingUser(name);
      },
      [this] { accept(); },
      [this](const QString& text) {
        ok_->setEnabled(true);
        Refuse(*failure_, text);
      });
}

IdleWatch::IdleWatch(int minutes, QObject* parent) : QObject(parent), timer_(new QTimer(this)) {
  timer_->setSingleShot(true);
  timer_->setInterval(minutes * 60 * 1000);
  connect(timer_, &QTimer::timeout, this, &IdleWatch::Idle);
  qApp->installEventFilter(this);
  Restart();
}

void IdleWatch::Restart() { timer_->start(); }

bool IdleWatch::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonPress:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
      Restart();
      break;
    default:
      break;
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace torvell
