// What an editable table has to know about its cells.
#pragma once

#include <cstdint>
#include <string>

namespace rvx {

// The kind of a column.
enum class tagCICELTYPE : int32_t {
  ReadOnly = 0,
  List = 1,    // one of a list of texts
  Text = 2,    // any text
  Whole = 3,   // a whole number
  Decimal = 4  // a decimal number
};

// A range. Equal ends mean that there is none.
template <class Minimum, class Maximum>
struct CICDataPoint {
  bool operator==(const CICDataPoint& other) const = default;
  bool IsRange() const { return minimum != maximum; }

  Minimum minimum{};
  Maximum maximum{};
};
using IntRange = CICDataPoint<int, int>;
using DoubleRange = CICDataPoint<double, double>;

// Knows what may go into each cell of a table; each screen has its own. Rows and columns count from
// 0. Number texts have the user's decimal sign. Each operation throws InvalidException (by pointer,
// the catcher deletes it) where there is no result. GUI thread.
class CICAvailableData {
 public:
  virtual ~CICAvailableData() = default;
  // The choice of a list cell; InvalidException past the last one.
  virtual std::string GetListItem(int row, int column, int index) = 0;
  // What a cell is to hold when the first cell of its row has been filled; InvalidException for a
  // cell that can't be edited.
  virtual std::string GetDefaultText(int row, int column) = 0;
  // The range and the decimals of its hint; InvalidException for a cell without one.
  virtual void GetDoubleRange(int row, int column, DoubleRange& range, int& decimals) = 0;
  virtual void GetIntRange(int row, int column, IntRange& range) = 0;
};

}  // namespace rvx
