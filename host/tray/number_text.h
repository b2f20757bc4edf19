// Numbers and times as the command line shows them: with a point in every locale.
#pragma once

#include <optional>
#include <string>

#include "platform/date.h"

namespace torvell {

// The shortest text that reads back as the same double: "-20", "0.1".
std::string ExactNumber(double value);

// Returns the value with a fixed number of decimals; never "-0.0".
std::string FixedNumber(double value, int decimals);

// "h:mm:ss", or "m:ss" below an hour.
std::string DurationText(long seconds);

// ISO 8601; empty if the date is null or invalid.
inline std::string TimeText(const platform::Date& date) { return platform::FormatIsoDate(date); }

}  // namespace torvell
