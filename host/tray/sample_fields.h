// The fields of a sample that people see in a row: one list for the command line and the window.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>

#include "host/core/sample_store.h"

namespace torvell {

// A number with its decimals. With isZeroNone, 0 means that there is no value and is shown as
// nothing.
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
  SampleQuery::Order order;   // which field it is, and the order that its heading sorts by
  const char* plainHeading;   // on the command line, with its unit
  const char* screenHeading;  // in the window, with its unit
  bool isNumber;              // aligned to the right
  ShownValue (*value)(const StoredSample&);
};

// In the order of SampleQuery::Order, which is the order in which they are shown.
std::span<const SampleField> SampleFields();

}  // namespace torvell
