// The fields that open over a cell of an editable table.
#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <functional>
#include <optional>
#include <string>

#include "module/toolkit/editlist/edit_table.h"
#include "module/toolkit/editlist/number_filter.h"

namespace rvx {

// Is called once with the end of an edit: with its text, or without one if it was dropped. After
// that the editor deletes itself.
using EditEnd = std::function<void(const CellEdit& edit, const std::optional<std::string>& text)>;

// A field for any text. It deletes itself, and ends when it loses the focus; an empty text is
// dropped. GUI thread.
class CInPlaceStrEdit : public QLineEdit {
 public:
  // `parent` is the widget that the field lies on, `cell` the cell's rectangle there. Escape and
  // Enter give the focus to `list`.
  CInPlaceStrEdit(QWidget* parent, QWidget* list, const QRect& cell, const CellEdit& edit,
                  EditEnd end);

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  // Whether Enter may end the edit now; a refusal beeps.
  virtual bool MayEnd() const { return true; }

  const CellEdit edit_;

 private:
  void GrowToText();
  void End();

  QWidget* const list_;
  const EditEnd end_;
  bool cancelled_ = false;
  bool ended_ = false;
};

// A field for a number, which checks each key; a refused one beeps and changes nothing. The allowed
// range is shown under the cell.
class CInPlaceNumberEdit : public CInPlaceStrEdit {
 public:
  ~CInPlaceNumberEdit() override;
  // The hint, null without a range.
  QLabel* hint() const { return hint_; }

 protected:
  CInPlaceNumberEdit(QWidget* parent, QWidget* list, const QRect& cell, const CellEdit& edit,
                     EditEnd end, CellNumberFilter filter);
  void ShowHint(const QRect& cell, const QString& text);

  void keyPressEvent(QKeyEvent* event) override;
  bool MayEnd() const override { return !text().isEmpty(); }

 private:
  bool HandleCharacter(const QString& typed);
  // Undoes an input that did not come by typing and does not fit.
  void CheckText(const QString& now);

  const CellNumberFilter filter_;
  QString acceptedText_;
  bool removing_ = false;
  QPointer<QLabel> hint_;  // lies on the window, so that the last row's is seen too
};

class CInPlaceIntEdit final : public CInPlaceNumberEdit {
 public:
  CInPlaceIntEdit(QWidget* parent, QWidget* list, const QRect& cell, const CellEdit& edit,
                  EditEnd end);
};

class CInPlaceDblEdit final : public CInPlaceNumberEdit {
 public:
  CInPlaceDblEdit(QWidget* parent, QWidget* list, const QRect& cell, const CellEdit& edit,
                  EditEnd end);
};

}  // namespace rvx
