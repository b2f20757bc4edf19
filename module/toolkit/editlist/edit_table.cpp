#include "module/toolkit/editlist/edit_table.h"

#include <algorithm>

#include "boundary/exceptions.h"
#include "module/toolkit/local_numbers.h"
#include "platform/text.h"

namespace rvx {
namespace {

// Calls `ask`; returns false if it has no result.
template <class Ask>
bool HasAnswer(const Ask& ask) {
  try {
    ask();
    return true;
  } catch (InvalidException* none) {
    delete none;
    return false;
  }
}

// The choice that reads like the text or, failing that, is the same number: a table may show
// "-20.00" for the choice "-20". -1 without one.
int FindChoice(const std::vector<std::string>& choices, const std::string& text) {
  const auto same = std::find(choices.begin(), choices.end(), text);
  if (same != choices.end()) return static_cast<int>(same - choices.begin());
  const auto number = [](const std::string& choice) {
    return platform::ParseDouble(platform::RemoveBlanks(FromLocal(choice)));
  };
  const auto wanted = number(text);
  for (size_t i = 0; wanted && i < choices.size(); ++i) {
    if (number(choices[i]) == wanted) return static_cast<int>(i);
  }
  return -1;
}

// More choices than a person can look through come from data whose end is never reported.
constexpr int kMaxChoices = 10000;

}  // namespace

// --- Columns and rows

void EditTable::InsertColumn(int number, tagCICELTYPE type) {
  if (number < 0 || number > columnCount_) return;
  ++columnCount_;
  std::map<int, tagCICELTYPE> moved;
  for (const auto& [column, old] : types_) moved[column >= number ? column + 1 : column] = old;
  moved[number] = type;
  types_ = std::move(moved);
  for (auto& row : rows_) row.insert(row.begin() + number, std::string());
}

void EditTable::DeleteColumn(int number) {
  if (number < 0 || number >= columnCount_) return;
  --columnCount_;
  std::map<int, tagCICELTYPE> remaining;
  for (const auto& [column, type] : types_) {
    if (column != number) remaining[column > number ? column - 1 : column] = type;
  }
  types_ = std::move(remaining);
  for (auto& row : rows_) row.erase(row.begin() + number);
  currentColumn_ = std::clamp(currentColumn_, 0, std::max(0, columnCount_ - 1));
}

bool EditTable::IsAddRow(int row) const {
  return row >= 0 && row == rowCount() - 1 && columnCount_ > 0 && rows_.back()[0] == kAddRowText;
}

const std::string& EditTable::text(int row, int column) const {
  return rows_.at(static_cast<size_t>(row)).at(static_cast<size_t>(column));
}

void EditTable::SetText(int row, int column, const std::string& text) {
  rows_.at(static_cast<size_t>(row)).at(static_cast<size_t>(column)) = text;
  Changed(row);
}

void EditTable::AppendRow(const std::vector<std::string>& texts) { InsertRow(rowCount(), texts); }

void EditTable::AppendAddRow() { InsertRow(rowCount(), {kAddRowText}); }

void EditTable::Clear() {
  while (rowCount() > 0) {
    rows_.pop_back();
    if (observer_ != nullptr) observer_->RowRemoved(rowCount());
  }
  currentRow_ = currentColumn_ = 0;
}

void EditTable::InsertRow(int row, std::vector<std::string> texts) {
  texts.resize(static_cast<size_t>(columnCount_));
  rows_.insert(rows_.begin() + row, std::move(texts));
  if (observer_ != nullptr) observer_->RowInserted(row);
}

void EditTable::Changed(int row) {
  if (observer_ != nullptr) observer_->RowChanged(row);
}

// --- The current cell

void EditTable::SetCurrent(int row, int column) {
  currentRow_ = std::clamp(row, 0, std::max(0, rowCount() - 1));
  currentColumn_ = std::clamp(column, 0, std::max(0, columnCount_ - 1));
}

void EditTable::MoveCurrent(int rows, int columns) {
  SetCurrent(currentRow_ + rows, currentColumn_ + columns);
}

void EditTable::PageUp(int topVisible, int visibleRows) {
  const int row = currentRow_ == topVisible ? topVisible - visibleRows : topVisible;
  SetCurrent(row, currentColumn_);
}

void EditTable::PageDown(int topVisible, int visibleRows) {
  const int bottom = topVisible + visibleRows - 1;
  SetCurrent(currentRow_ == bottom ? bottom + visibleRows : bottom, currentColumn_);
}

// --- Editing

bool EditTable::MayEdit(int row, int column) {
  if (row < 0 || row >= rowCount() || column < 0 || column >= columnCount_) return false;
  if (IsAddRow(row)) return column == 0 && !IsFull();
  if (column == 0) return true;
  return data_ == nullptr || HasAnswer([&] { (void)data_->GetDefaultText(row, column); });
}

std::optional<CellEdit> EditTable::BeginEdit(int row, int column) {
  CellEdit edit;
  edit.row = row;
  edit.column = column;
  const auto type = types_.find(column);
  if (type == types_.end() || type->second == tagCICELTYPE::ReadOnly) return std::nullopt;
  edit.type = type->second;
  if (!IsAddRow(row)) edit.startText = text(row, column);
  if (data_ == nullptr) return edit;
  if (edit.type == tagCICELTYPE::Whole) {
    HasAnswer([&] { data_->GetIntRange(row, column, edit.intRange); });
  } else if (edit.type == tagCICELTYPE::Decimal) {
    HasAnswer([&] { data_->GetDoubleRange(row, column, edit.doubleRange, edit.decimals); });
  } else if (edit.type == tagCICELTYPE::List) {
    edit.choices = CollectChoices(row, column);
    if (!edit.startText.empty()) {
      edit.selected = FindChoice(edit.choices, edit.startText);
    } else if (edit.startText.empty() && !edit.choices.empty()) {
      // The choice after that of the row before: tests are mostly entered in their order.
      const int next = firstColumnChoice_ + 1;
      edit.selected = next < static_cast<int>(edit.choices.size()) ? next : 0;
    }
  }
  return edit;
}

std::vector<std::string> EditTable::CollectChoices(int row, int column) const {
  std::vector<std::string> choices;
  HasAnswer([&] {
    while (static_cast<int>(choices.size()) < kMaxChoices) {
      choices.push_back(data_->GetListItem(row, column, static_cast<int>(choices.size())));
    }
  });
  return choices;
}

void EditTable::AcceptEdit(int row, int column, const std::string& text) {
  if (row < 0 || row >= rowCount() || column < 0 || column >= columnCount_) return;
  const bool filledAddRow = IsAddRow(row) && !text.empty();
  // The name of the add row is not data and must not become data.
  if (IsAddRow(row) && (text.empty() || text == kAddRowText)) return;
  rows_[static_cast<size_t>(row)][static_cast<size_t>(column)] = text;
  if (column == 0) {
    FillDefaults(row);
    RememberChoice(row, text);
  }
  Changed(row);
  if (filledAddRow) AppendAddRow();
}

void EditTable::FillDefaults(int row) {
  if (data_ == nullptr) return;
  for (int column = 1; column < columnCount_; ++column) {
    HasAnswer([&] {
      rows_[static_cast<size_t>(row)][static_cast<size_t>(column)] =
          data_->GetDefaultText(row, column);
    });
  }
}

void EditTable::RememberChoice(int row, const std::string& text) {
  firstColumnChoice_ = -1;
  if (data_ == nullptr) return;
  HasAnswer([&] {
    for (int i = 0; i < kMaxChoices; ++i) {
      if (data_->GetListItem(row, 0, i) == text) {
        firstColumnChoice_ = i;
        return;
      }
    }
  });
}

bool EditTable::InsertNew(int row) {
  if (row < 0 || row >= rowCount() || IsAddRow(row) || IsFull()) return false;
  InsertRow(row, {});
  SetCurrent(row, 0);
  return true;
}

bool EditTable::Delete(int row) {
  if (row < 0 || row >= rowCount() || IsAddRow(row)) return false;
  rows_.erase(rows_.begin() + row);
  if (observer_ != nullptr) observer_->RowRemoved(row);
  // A table that was opened full has room again.
  if (maximumRows_ != kNoLimit && !HasAddRow()) AppendAddRow();
  SetCurrent(currentRow_, currentColumn_);
  return true;
}

}  // namespace rvx
