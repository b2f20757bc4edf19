// Numbers and times on the screen, in the user's locale. What is stored or exported never goes
// through here.
#pragma once

#include <QString>

#include "platform/date.h"

namespace torvell {

// A fixed number of decimals, no thousands separators; "-" for a number that is none.
QString DisplayNumber(double value, int decimals);
// Date and time to the second, the short forms of the locale; "-" unless valid.
QString DisplayTime(const platform::Date& date);
// The time of day alone.
QString DisplayClock(const platform::Date& date);

}  // namespace torvell
