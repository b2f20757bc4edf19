// The table of the tray: keys, clipboard, in-place editing.
#pragma once

#include <QTableView>
#include <vector>

#include "host/desktop/tray_rows.h"

class QMimeData;

namespace torvell {

class InstrumentSession;
class TrayModel;

// Shows one session's tray at a time. All rows fit into its height while they stay readable. The
// window's thread only.
class TrayView : public QTableView {
  Q_OBJECT

 public:
  explicit TrayView(QWidget* parent = nullptr);

  void SetSession(InstrumentSession* session);
  void SetEditable(bool editable);
  // Positions from 0, rising.
  std::vector<int> SelectedPositions() const;

 public Q_SLOTS:
  void Copy();
  void Cut();
  void Paste();
  void Clear();
  void FillDown();
  void MoveUp();
  void MoveDown();
  void EditPosition();

 Q_SIGNALS:
  // Something could not be done: one line for the user.
  void Notice(const QString& text);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void FitRows();
  void Refresh();
  void Move(int by);
  // Returns the edit that pastes the clipboard into this tray, from `at` on.
  TrayEdit EditOfClipboard(const std::vector<TrayCell>& tray, int at);
  // Tells the user which part of a paste was cut, and how much found no place, if anything.
  void SayWhatWasLost(const QStringList& sampleIds, int unplaced);
  void Select(const std::vector<int>& positions);

  TrayModel* model_;
  InstrumentSession* session_ = nullptr;
  bool editable_ = false;
};

}  // namespace torvell
