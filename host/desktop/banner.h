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
    Quiet,  // says what is so
    Loud    // somebody should do something; at most one of these is shown
  };
  explicit Banner(Tone tone, QWidget* parent = nullptr);

  // The tooltip holds the whole text, and below it what `more` adds.
  void SetText(const QIcon& icon, const QString& text, const QString& more = {});
  QString text() const { return text_; }
  // A button at the right end, in the order of the calls.
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
