// Failures of a screen's own code, which must end the screen and not the program.
#pragma once

#include <string>

namespace rvx {

class C_RVX;

// What the exception in flight says, for people; takes over and deletes what is raised by pointer.
// Call it inside a catch block. Never empty.
std::string DescribeRaised();

// Tells the host's user that the screen was ended, and why. `instrument` may be null, where it may
// be gone by now. Raises nothing. Any thread.
void ReportScreenFailure(C_RVX* instrument, const std::string& label, const std::string& reason);

}  // namespace rvx
