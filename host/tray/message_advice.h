// What stands behind the short fixed messages of instruments: their likely cause, what was done,
// and what helps.
#pragma once

#include <optional>
#include <string>

namespace torvell {

struct MessageAdvice {
  const char* cause;   // the likely one
  const char* done;    // what the program did about it
  const char* remedy;  // what the reader can do
};

// The advice for a message as it was reported; nothing for one that says all this itself, and for
// an unknown one. Any thread.
std::optional<MessageAdvice> AdviceFor(const std::string& message);

// The same in three lines, each with its heading; empty without advice.
std::string AdviceText(const std::string& message);

}  // namespace torvell
