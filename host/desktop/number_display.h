// Numbers and times for the screen, in the user's locale. Never used for what is stored or
// exported.
#pragma once

#include <QString>

#include "platform/date.h"

namespace torvell {

// A fixed number of decimals, no thousands separators; "-" for a NaN.
QString DisplayNumber(double value, int decimals);
// Date and time to the second, in the short forms of the locale; "-" if the date is not valid.
QString DisplayTime(const platform::Date& date);
// The time of day alone.
QString DisplayClock(const platform::Date& date);

}  // namespace torvell
