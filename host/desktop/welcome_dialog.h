// The first screen of a demonstration: its users, and what each may do.
#pragma once

#include <QDialog>

namespace torvell {

// A button for each user of the demonstration; no password is needed there. The window's thread
// only.
class WelcomeDialog : public QDialog {
  Q_OBJECT

 public:
  explicit WelcomeDialog(QWidget* parent);

 Q_SIGNALS:
  // The person in front of the window chose to act as this user.
  void Chosen(const QString& name);
};

}  // namespace torvell
