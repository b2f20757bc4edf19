// A list of lines with check boxes of which at most one is checked.
#pragma once

#include <QListWidget>
#include <QStringList>

namespace rvx {

// A click on a line checks it and unchecks the one before; a click on the checked line unchecks it.
// With keys: the arrows check the line they reach, Space checks and unchecks. GUI thread.
class CViscListCheckBox final : public QListWidget {
 public:
  explicit CViscListCheckBox(QWidget* parent = nullptr);

  void SetLines(const QStringList& lines);
  // The index of the checked line, -1 for none.
  int checkedLine() const { return checkedLine_; }

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Toggle(int line);
  void Check(int line);
  void Uncheck();

  int checkedLine_ = -1;
};

}  // namespace rvx
