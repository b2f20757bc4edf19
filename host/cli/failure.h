// A failure that ends a command, with its exit code.
#pragma once

#include <stdexcept>
#include <string>

#include "host/cli/exit_codes.h"

namespace torvell {

// Thrown by value. The message is complete text for people: what happened, the likely cause, what
// to do. It may have several lines; each is printed after "error: ".
class CommandFailure : public std::runtime_error {
 public:
  CommandFailure(ExitCode code, const std::string& message)
      : std::runtime_error(message), code_(code) {}
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

}  // namespace torvell
