// A command's end by a failure, with the exit code that goes with it.
#pragma once

#include <stdexcept>
#include <string>

#include "host/cli/exit_codes.h"

namespace torvell {

// The message is for people and complete: what happened, the likely cause, what to do. It may have
// several lines; each is printed behind "error: ".
class CommandFailure : public std::runtime_error {
 public:
  CommandFailure(ExitCode code, const std::string& message)
      : std::runtime_error(message), code_(code) {}
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

}  // namespace torvell
