// The left part of the window: the instruments, their states, and the module's status window.
#pragma once

#include <QFrame>
#include <QWidget>
#include <vector>

class QLabel;
class QVBoxLayout;

namespace torvell {

class InstrumentSession;

// One instrument in the list: its name, port and address, and its state as one word in a fixed
// place.
class InstrumentCard : public QFrame {
  Q_OBJECT

 public:
  InstrumentCard(InstrumentSession& session, QWidget* parent);
  void SetSelected(bool selected);
  void Refresh();
  InstrumentSession& session() { return session_; }

 Q_SIGNALS:
  void Chosen();

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  InstrumentSession& session_;
  QLabel* name_;
  QLabel* place_;
  QLabel* icon_;
  QLabel* word_;
};

// The list of instruments, one of which is selected, and below it the status window of that one.
// The window's thread only.
class InstrumentPanel : public QWidget {
  Q_OBJECT

 public:
  explicit InstrumentPanel(QWidget* parent = nullptr);
  // Closes the module's status window. Must be destroyed before the instruments.
  ~InstrumentPanel() override;

  void SetSessions(const std::vector<InstrumentSession*>& sessions);
  void Select(InstrumentSession* session);
  void CloseStatusWindow();

 Q_SIGNALS:
  void Chosen(torvell::InstrumentSession* session);

 private:
  void RefreshAge();
  void ShowStatusWindow();

  QVBoxLayout* cards_;
  std::vector<InstrumentCard*> list_;
  InstrumentSession* selected_ = nullptr;
  InstrumentSession* shown_ = nullptr;  // the session whose status window was asked for
  bool hasWindow_ = false;  // the status window exists, and shows the age of its values itself
  QWidget* place_;          // the status window's parent
  QLabel* age_;
  QLabel* empty_;
};

}  // namespace torvell
