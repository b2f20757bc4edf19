// What of a sample people see as a row: one list for the command line and for the window.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>

#include "host/core/sample_store.h"

namespace torvell {

// A number with its decimals. Where 0 stands for none, it is shown as nothing.
struct ShownNumber {
  double value = 0.0;
  int decimals = 0;
  bool isZeroNone = false;
};
// Where a sample comes from.
struct ShownOrigin {
  bool isSimulated = false;
};
using ShownValue = std::variant<platform::Date, std::string, int64_t, ShownNumber, ShownOrigin>;

struct SampleField {
  SampleQuery::Order order;   // which it is, and what the rows are ordered by at its heading
  const char* plainHeading;   // in a table of the command line, with its unit
  const char* screenHeading;  // in the window, with its unit
  bool isNumber;              // set to the right
  ShownValue (*value)(const StoredSample&);
};

// In the order of SampleQuery::Order, which is the order in which they are shown.
std::span<const SampleField> SampleFields();

}  // namespace torvell
