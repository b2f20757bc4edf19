// Strips across the window: the newest open message, the simulation, a finished run.
#pragma once

#include <QFrame>

class QHBoxLayout;
class QLabel;
class QPushButton;

namespace torvell {

// A strip with an icon, a text of up to two lines and buttons.
class Banner : public QFrame {
  Q_OBJECT

 public:
  enum class Tone {
    Quiet,  // informs about a state
    Loud    // asks for an action; at most one of these is shown
  };
  explicit Banner(Tone tone, QWidget* parent = nullptr);

  // The tooltip shows the whole text and, below it, `more`.
  void SetText(const QIcon& icon, const QString& text, const QString& more = {});
  QString text() const { return text_; }
  // Adds a button at the right end, in the order of the calls. The banner owns it.
  QPushButton* AddButton(const QString& label);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void Fit();

  QLabel* icon_;
  QLabel* label_;
  QHBoxLayout* layout_;
  QString text_;
};

}  // namespace torvell
