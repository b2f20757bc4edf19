// Dates as a person reads them on a screen or a sheet of paper. Stored texts never pass through
// here.
#pragma once

#include <string>

#include "platform/date.h"

namespace platform {

// The date by a format of strftime, in the language and order of the user's environment (LC_ALL,
// LC_TIME, LANG), whatever the process's own locale is. "%c" is date and time, "%x" the date, "%X"
// the time. UTF-8. A null date gives the empty text, an invalid one "Invalid DateTime". Any thread.
std::string FormatLocalDate(const Date& date, const char* format = "%c");

}  // namespace platform
