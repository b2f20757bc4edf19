// The end of the program for a fault that it must not go on with.
#pragma once

#include <string>

namespace platform {

// Writes the text to standard error (under virtual time with what repeats the run) and aborts. Any
// thread.
[[noreturn]] void EndProgram(const std::string& message);

}  // namespace platform
