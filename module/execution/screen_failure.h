// Failures of a screen's own code, which must end the screen and not the program.
#pragma once

#include <string>

namespace rvx {

class C_RVX;

// Returns the message of the exception being handled, for people; deletes one that was thrown by
// pointer. Call it inside a catch block. Never empty.
std::string DescribeRaised();

// Tells the host's user that the screen was ended, and why. `instrument` is null where it may have
// been destroyed. Throws nothing. Any thread.
void ReportScreenFailure(C_RVX* instrument, const std::string& label, const std::string& reason);

}  // namespace rvx
