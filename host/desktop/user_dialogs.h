// Dialogs about the user of the window: log-in, lock, the first user of a folder.
#pragma once

#include <QDialog>
#include <functional>

#include "host/core/users.h"
#include "host/desktop/worker.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace torvell {

// Asks for name and password. It is accepted when they are right; then that user acts. The worker
// checks the password, since that is slow on purpose.
class LoginDialog : public QDialog {
  Q_OBJECT

 public:
  // `note` is shown above the fields and may be empty. `fixedName` is the user of a locked window:
  // only this user can go on, and the dialog can't be closed. Empty for a normal log-in.
  LoginDialog(Users& users, Worker& worker, const QString& note, const QString& fixedName,
              QWidget* parent);

  QLineEdit& nameField() { return *name_; }
  QLineEdit& passwordField() { return *password_; }
  void reject() override;

 private:
  void Try();

  Users& users_;
  Worker& worker_;
  const QString fixedName_;
  QLineEdit* name_;
  QLineEdit* password_;
  QLabel* failure_;
  QPushButton* ok_;
};

// Makes the first user of a real data folder, of level 100, who then acts.
class FirstUserDialog : public QDialog {
  Q_OBJECT

 public:
  FirstUserDialog(Users& users, Worker& worker, QWidget* parent);

 private:
  void Try();

  Users& users_;
  Worker& worker_;
  QLineEdit* name_;
  QLineEdit* password_;
  QLineEdit* again_;
  QLabel* failure_;
  QPushButton* ok_;
};

// Emits Idle after a time without a key or a mouse movement in any window of the program.
class IdleWatch : public QObject {
  Q_OBJECT

 public:
  explicit IdleWatch(int minutes, QObject* parent = nullptr);
  void Restart();

 Q_SIGNALS:
  void Idle();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  class QTimer* timer_;
};

}  // namespace torvell
