// A table for tests with three columns: a list of temperatures, a decimal number from 1000 to
// 50000, and a whole number from 30 to 255.
#pragma once

#include <string>
#include <vector>

#include "boundary/exceptions.h"
#include "module/toolkit/editlist/available_data.h"

namespace rvx {

class TableData final : public CICAvailableData {
 public:
  std::string GetListItem(int, int column, int index) override {
    if (column != 0 || index >= static_cast<int>(choices.size())) throw new InvalidException;
    return choices[static_cast<size_t>(index)];
  }
  std::string GetDefaultText(int, int column) override {
    if (column == 1) return "1500.0";
    if (column == 2) return "60";
    throw new InvalidException;
  }
  void GetDoubleRange(int, int column, DoubleRange& range, int& decimals) override {
    if (column != 1) throw new InvalidException;
    range.minimum = 1000.0;
    range.maximum = 50000.0;
    decimals = 1;
  }
  void GetIntRange(int, int column, IntRange& range) override {
    if (column != 2) throw new InvalidException;
    range.minimum = 30;
    range.maximum = 255;
  }

  std::vector<std::string> choices = {"-10", "", "-20", "-30"};
};

}  // namespace rvx
