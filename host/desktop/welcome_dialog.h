// The first screen of a demonstration: who there is, and what each may do.
#pragma once

#include <QDialog>

namespace torvell {

// A button for each user of the demonstration; nobody needs to know a password there. The window's
// thread only.
class WelcomeDialog : public QDialog {
  Q_OBJECT

 public:
  explicit WelcomeDialog(QWidget* parent);

 Q_SIGNALS:
  // Somebody wants to act as this user.
  void Chosen(const QString& name);
};

}  // namespace torvell
