// The window's menus, and the questions around starting and closing.
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>
#include <utility>

#include "host/core/audit_write.h"
#include "host/desktop/build_info.h"
#include "host/desktop/help_window.h"
#include "host/desktop/instrument_session.h"
#include "host/desktop/main_window.h"
#include "host/desktop/samples_page.h"
#include "host/desktop/tray_page.h"
#include "host/desktop/user_dialogs.h"
#include "host/desktop/welcome_dialog.h"
#include "host/desktop/window_start.h"

namespace torvell {

void MainWindow::BuildMenus() {
  QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
  logIn_ = file->addAction(QStringLiteral("Log &In ..."), this, &MainWindow::LogIn);
  logOut_ = file->addAction(QStringLiteral("Log &Out"), this, &MainWindow::LogOut);
  lock_ = file->addAction(QStringLiteral("&Lock"), this, &MainWindow::Lock);
  lock_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
  file->addSeparator();
  file->addAction(QStringLiteral("&Export Samples ..."), samples_, &SamplesPage::ExportAll);
  file->addSeparator();
  QAction* quit = file->addAction(QStringLiteral("&Quit"), this, &QWidget::close);
  quit->setShortcut(QKeySequence::Quit);

  tray_->FillTrayMenu(*menuBar()->addMenu(QStringLiteral("&Tray")));
  tray_->FillRunMenu(*menuBar()->addMenu(QStringLiteral("&Run")));
  settingsMenu_ = menuBar()->addMenu(QStringLiteral("&Configuration"));
  serviceMenu_ = menuBar()->addMenu(QStringLiteral("&Service"));
  for (QMenu* menu : menuBar()->findChildren<QMenu*>()) menu->setToolTipsVisible(true);

  QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
  QAction* contents = help->addAction(QStringLiteral("&Contents"), this,
                                      [this] { ShowHelp(QStringLiteral("Contents")); });
  contents->setShortcut(QKeySequence::HelpContents);
  help->addSeparator();
  help->addAction(QStringLiteral("&About TORVELL"), this, &MainWindow::ShowAbout);
}

void MainWindow::RefreshMenus() {
  settingsMenu_->clear();
  serviceMenu_->clear();
  if (selected_ == nullptr) {
    for (QMenu* menu : {settingsMenu_, serviceMenu_}) {
      menu->addAction(QStringLiteral("No instrument"))->setEnabled(false);
      menu->menuAction()->setVisible(true);
    }
    return;
  }
  for (const ScreenOffer& offer : screens_->offers()) {
    QMenu* menu = offer.kind == ScreenKind::Configuration ? settingsMenu_ : serviceMenu_;
    QAction* action = menu->addAction(offer.label, this, [this, offer] {
      if (selected_ != nullptr) screens_->Open(selected_->entry(), offer);
    });
    action->setEnabled(offer.refusal.isEmpty());
    if (!offer.refusal.isEmpty()) action->setToolTip(offer.refusal);
  }
  for (QMenu* menu : {settingsMenu_, serviceMenu_}) {
    menu->menuAction()->setVisible(!menu->isEmpty());
  }
  tray_->SetSampleKinds(screens_->sampleKinds());
}

void MainWindow::RefreshActor() {
  struct Answer {
    Actor actor;
    bool isUser = false;
  };
  auto answer = std::make_shared<Answer>();
  worker_->Do(
      this,
      [this, answer] {
        answer->actor = host_.users().ActingAs();
        answer->isUser =
            answer->actor.level > kLevelNobody && host_.users().Exists(answer->actor.user);
      },
      [this, answer] {
        ApplyActor(QString::fromStdString(answer->actor.user), answer->actor.level, answer->isUser);
      },
      [this](const QString& text) { ShowFailure(text); });
}

void MainWindow::ApplyActor(const QString& name, int32_t level, bool isUser) {
  level_ = level;
  user_ = name;
  actor_->setText(
      user_.isEmpty()
          ? QStringLiteral("Nobody is logged in: reading only")
          : QStringLiteral("%1, level %2 (%3)").arg(user_).arg(level_).arg(LevelName(level_)));
  tray_->SetLevel(level_);
  logOut_->setEnabled(isUser);
  lock_->setEnabled(isUser);
  if (selected_ != nullptr) screens_->Ask(selected_->entry(), level_);
  OfferInterrupted();
}

void MainWindow::LogIn() {
  if (AnyRunning() && level_ > kLevelNobody) {
    ShowNotice(QStringLiteral("A tray runs in the name of %1; another user can log in when it is "
                              "over.")
                   .arg(user_));
    return;
  }
  LoginDialog dialog(host_.users(), *worker_, QString(), QString(), this);
  if (dialog.exec() == QDialog::Accepted) RefreshActor();
}

void MainWindow::LogOut() {
  // A sample is stored with the name of the user who acts at that time.
  if (AnyRunning()) {
    ShowNotice(QStringLiteral("A tray runs in the name of %1: lock the window instead, the run "
                              "goes on.")
                   .arg(user_));
    return;
  }
  worker_->Do(
      this, [this] { host_.users().SetActingUser(""); }, [this] { RefreshActor(); },
      [this](const QString& text) { ShowFailure(text); });
}

void MainWindow::Lock() {
  if (!lock_->isEnabled() || closing_ || findChild<LoginDialog*>() != nullptr) return;
  LoginDialog dialog(host_.users(), *worker_,
                     QStringLiteral("The window is locked for %1. What runs goes on.").arg(user_),
                     user_, this);
  dialog.exec();
  if (idle_ != nullptr) idle_->Restart();
  RefreshActor();
}

void MainWindow::Greet(const Start& start) {
  if (start.isDemo) {
    if (start.level > kLevelNobody) return;
    auto* dialog = new WelcomeDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &WelcomeDialog::Chosen, this, [this](const QString& name) {
      worker_->Do(
          this, [this, name] { host_.users().SetActingUser(name.toStdString()); },
          [this] { RefreshActor(); }, [this](const QString& text) { ShowFailure(text); });
    });
    dialog->open();
    return;
  }
  if (!start.hasUsers) {
    auto* dialog = new FirstUserDialog(host_.users(), *worker_, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::finished, this, [this] { RefreshActor(); });
    dialog->open();
  } else if (start.level == kLevelNobody) {
    auto* dialog = new LoginDialog(host_.users(), *worker_, QString(), QString(), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::finished, this, [this] { RefreshActor(); });
    dialog->open();
  }
}

void MainWindow::OfferInterrupted() {
  if (level_ < kLevelOperator) return;
  const std::vector<InterruptedTray> found = std::exchange(interrupted_, {});
  for (const auto& session : sessions_) {
    const auto interrupted = std::find_if(found.begin(), found.end(), [&](const auto& each) {
      return each.archiveKey == session->entry().identity.archiveKey;
    });
    if (interrupted == found.end()) continue;
    auto* box = new QMessageBox(
        QMessageBox::Question, QStringLiteral("Interrupted run"),
        QStringLiteral("%1: %2").arg(QString::fromStdString(session->entry().Title()),
                                     QString::fromStdString(DescribeInterrupted(*interrupted))),
        QMessageBox::NoButton, this);
    box->setInformativeText(
        QStringLiteral("What was measured is in the archive. Nothing moves "
                       "until you start the tray."));
    box->setAttribute(Qt::WA_DeleteOnClose);
    QAbstractButton* rest =
        box->addButton(QStringLiteral("Keep What Is Left"), QMessageBox::AcceptRole);
    QAbstractButton* drop =
        box->addButton(QStringLiteral("Empty the Tray"), QMessageBox::ResetRole);
    box->addButton(QStringLiteral("Decide Later"), QMessageBox::RejectRole);
    InstrumentSession* one = session.get();
    connect(box, &QMessageBox::buttonClicked, this, [one, rest, drop](QAbstractButton* clicked) {
      if (clicked == rest) one->KeepRest();
      if (clicked == drop) one->DropInterrupted();
    });
    box->open();
  }
}

void MainWindow::ShowHelp(const QString& topic) {
  // If a modal dialog asks for help, the page must be a child of that dialog to be usable; if a
  // screen asks, the page must not bring this window in front of it.
  QWidget* owner = QApplication::activeModalWidget();
  if (owner == nullptr) owner = QApplication::activeWindow();
  if (owner != nullptr && owner == help_) owner = help_->parentWidget();
  if (owner == nullptr) owner = this;
  if (help_.isNull() || help_->parentWidget() != owner) {
    delete help_.data();
    help_ = new HelpWindow(owner);
  }
  help_->ShowTopic(topic);
  help_->show();
  help_->raise();
  help_->activateWindow();
}

void MainWindow::ShowAbout() {
  QString instruments;
  for (const auto& session : sessions_) {
    const rvx::InstrumentIdentity& identity = session->entry().identity;
    instruments += QStringLiteral("\n%1, firmware %2%3")
                       .arg(QString::fromStdString(session->entry().Title()),
                            QString::fromStdString(identity.firmware),
                            identity.simulated ? QStringLiteral(", simulated") : QString());
  }
  QMessageBox::about(
      this, QStringLiteral("About TORVELL"),
      QStringLiteral("TORVELL %1\n%2\n\nData folder: %3\n%4")
          .arg(BuildVersion(), BuildDescription(), QString::fromStdString(host_.dataFolder()),
               instruments.isEmpty() ? QStringLiteral("No instrument")
                                     : QStringLiteral("Instruments:") + instruments));
}

}  // namespace torvell
