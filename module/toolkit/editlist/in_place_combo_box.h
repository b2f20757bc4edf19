// The list of choices that drops down over a cell of an editable table.
#pragma once

#include <QFrame>

#include "module/toolkit/editlist/in_place_edit.h"

class QListWidget;
class QListWidgetItem;

namespace rvx {

// Opens at once. Enter and a click take a choice, a click elsewhere keeps the one that is selected,
// Escape drops the edit, Tab beeps. It deletes itself when it closes. GUI thread.
class CInPlaceComboBox final : public QFrame {
 public:
  // `cell` in the coordinates of `parent`, over which it opens; the focus goes back to `list`.
  CInPlaceComboBox(QWidget* parent, QWidget* list, const QRect& cell, const CellEdit& edit,
                   EditEnd end);

  QListWidget& choices() { return *choices_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void FillChoices(int height);
  // `cell` and the answer on the screen.
  QRect PlaceAt(const QRect& cell) const;
  // Ends the edit with this choice; without a choice, or with one that has no text, the edit is
  // dropped.
  void Take(const QListWidgetItem* item);
  void End(const std::optional<std::string>& text);

  const CellEdit edit_;
  QWidget* const list_;
  const EditEnd end_;
  QListWidget* const choices_;  // owned by Qt's parenthood
  bool ended_ = false;
};

}  // namespace rvx
