// The options before the command, and the command that was chosen.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/time_base.h"

namespace torvell {

class Session;

struct GlobalOptions {
  std::string dataFolder;  // empty: the default one
  bool simulate = false;
  std::string clock = "real";  // as typed
  std::optional<uint64_t> seed;
  std::string user;        // --user; its password is asked for
  std::string instrument;  // --instrument: port, archive key or index
  std::optional<int> passwordDescriptor;
  bool json = false;
  bool quiet = false;
};

// A parsed command line.
struct Invocation {
  GlobalOptions options;
  // The chosen command. It is called with its session and returns the program's exit code.
  std::function<int(Session&)> command;
  // Set instead of `command` for a program that opens the host itself.
  std::function<int(const GlobalOptions&)> program;
};

// "real", "virtual" or "xN" with N from 1 to 1000; nothing for anything else.
std::optional<platform::TimeBaseOptions> ParseClock(const std::string& text);

// Returns the time base that the options ask for. With a seed and the virtual clock the time of day
// starts at a fixed date, so that the same seed gives the same output.
platform::TimeBaseOptions MakeTimeBase(const GlobalOptions& options);

}  // namespace torvell
