// Whether a line would be written at all, for callers that would have to build its text.
#pragma once

#include "platform/log.h"

namespace platform::detail {

bool IsLogged(LogLevel level);

}  // namespace platform::detail
