// What every thread of the program does, whichever base runs it.
#pragma once

#include <functional>
#include <string>

namespace platform::detail {

// Runs the body and releases its state, with the start and the end in the log. An exception that
// leaves it is reported with the thread's name, and the process ends.
void RunThreadBody(const std::string& name, std::function<void()>& body);

}  // namespace platform::detail
