// The editable table without its window: cells, kinds of columns, the add row, the current cell,
// and what a gesture leads to.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "module/toolkit/editlist/available_data.h"

namespace rvx {

// The text in the first cell of the add row: the last row, by which a row is added and which is
// never data.
inline constexpr char kAddRowText[] = "Click here to add new item";

// Is told of changes, after each of them.
class EditTableObserver {
 public:
  virtual ~EditTableObserver() = default;
  virtual void RowInserted(int row) = 0;
  virtual void RowRemoved(int row) = 0;
  virtual void RowChanged(int row) = 0;
};

// An open edit: what the editor over the cell needs to know.
struct CellEdit {
  int row = 0;
  int column = 0;
  tagCICELTYPE type = tagCICELTYPE::ReadOnly;
  std::string startText;
  std::vector<std::string> choices;  // List
  int selected = -1;                 // List: the choice to select; -1: none
  IntRange intRange;                 // Whole
  DoubleRange doubleRange;           // Decimal
  int decimals = 0;                  // Decimal: of the hint
};

// The texts are UTF-8, numbers with the user's decimal sign. Not for two threads at once.
class EditTable {
 public:
  static constexpr int kNoLimit = -1;

  void SetObserver(EditTableObserver* observer) { observer_ = observer; }  // not owned
  void SetAvailableData(CICAvailableData* data) { data_ = data; }          // not owned
  // More data rows than this are refused.
  void SetMaximumRows(int rows) { maximumRows_ = rows; }

  // --- Columns, numbered from 0 Inserts before the column that has this number, or after the last
  // one; any other number changes nothing.
  void InsertColumn(int number, tagCICELTYPE type);
  void SetColumnType(int number, tagCICELTYPE type) { types_[number] = type; }
  void DeleteColumn(int number);
  int columnCount() const { return columnCount_; }

  // --- Rows
  int rowCount() const { return static_cast<int>(rows_.size()); }
  // Without the add row.
  int dataRowCount() const { return rowCount() - (HasAddRow() ? 1 : 0); }
  bool IsAddRow(int row) const;
  bool HasAddRow() const { return IsAddRow(rowCount() - 1); }
  const std::string& text(int row, int column) const;
  // Sets a cell without any consequence.
  void SetText(int row, int column, const std::string& text);
  // Appends a data row at the end: a screen calls it before AppendAddRow.
  void AppendRow(const std::vector<std::string>& texts);
  void AppendAddRow();
  void Clear();

  // --- The current cell
  int currentRow() const { return currentRow_; }
  int currentColumn() const { return currentColumn_; }
  void SetCurrent(int row, int column);
  // Arrow keys, Home and End: by rows and columns, within the list.
  void MoveCurrent(int rows, int columns);
  // Page keys, with the rows that are wholly visible.
  void PageUp(int topVisible, int visibleRows);
  void PageDown(int topVisible, int visibleRows);

  // --- Editing Whether an edit may begin here: on the add row only in its first cell, and only
  // while there is room.
  bool MayEdit(int row, int column);
  // What to edit: nothing for a read-only column. Call it where MayEdit allows.
  std::optional<CellEdit> BeginEdit(int row, int column);
  // The end of an edit with a text (a dropped one changes nothing): the row takes its defaults if
  // it was its first cell, and a new add row follows one that was filled.
  void AcceptEdit(int row, int column, const std::string& text);
  // Inserts an empty data row before this one. Returns false on the add row and when the table is
  // full.
  bool InsertNew(int row);
  // Removes a data row. Returns false on the add row.
  bool Delete(int row);

 private:
  std::vector<std::string> CollectChoices(int row, int column) const;
  void FillDefaults(int row);
  void RememberChoice(int row, const std::string& text);
  void InsertRow(int row, std::vector<std::string> texts);
  void Changed(int row);
  bool IsFull() const { return maximumRows_ != kNoLimit && dataRowCount() >= maximumRows_; }

  EditTableObserver* observer_ = nullptr;
  CICAvailableData* data_ = nullptr;
  int maximumRows_ = kNoLimit;
  int columnCount_ = 0;
  std::map<int, tagCICELTYPE> types_;
  std::vector<std::vector<std::string>> rows_;
  int currentRow_ = 0;
  int currentColumn_ = 0;
  int firstColumnChoice_ = -1;  // of the row last edited, among its choices; -1: none
};

// What is shown of a text in a cell `width` pixels wide: cut, with "..." at its end, if it is too
// long. `measure` gives the width of a text in pixels.
template <class Text, class Measure>
Text ClipText(const Text& text, int width, const Measure& measure, const Text& dots) {
  constexpr int kFrame = 4;  // pixels that the cell's frame and its distance take
  const int room = width - kFrame;
  if (measure(text) <= room) return text;
  Text clipped = text;
  do {
    clipped.chop(1);
  } while (!clipped.isEmpty() && measure(clipped + dots) > room);
  return clipped + dots;
}

}  // namespace rvx
