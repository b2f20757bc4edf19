// The end of the program for a fault after which it must not continue.
#pragma once

#include <string>

namespace platform {

// Writes the text to standard error (under virtual time with the line that repeats the run) and
// aborts. Any thread.
[[noreturn]] void EndProgram(const std::string& message);

}  // namespace platform
