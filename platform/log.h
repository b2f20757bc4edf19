// The program's diagnostic log, for engineers; off unless the environment variable TORVELL_LOG
// names a level (debug, info, warn, error). It goes to standard error. Failures for the user go to
// the instrument manager, not here.
#pragma once

#include <string>

namespace platform {

enum class LogLevel { Debug, Info, Warning, Error };

void Log(LogLevel level, const std::string& message);

}  // namespace platform
