// The end of the process for faults of the program itself.
#pragma once

#include <string>

namespace platform::detail {

// Exit code of a run that the virtual base gave up: deadlock, livelock, a thread left over.
inline constexpr int kAbandonedRunExitCode = 70;

// Writes the text to standard error and aborts. For uses of the platform that break its rules.
[[noreturn]] void Fatal(const std::string& message);

// Writes the text to standard error and ends the process without unwinding or exit handlers, since
// what those would touch belongs to threads that can't go on.
[[noreturn]] void AbandonRun(const std::string& report);

}  // namespace platform::detail
