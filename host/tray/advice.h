// What to tell people about a message or a refusal of an instrument, by its code. The one place
// where the host's commands and menus are named in such advice, since the module knows neither.
#pragma once

#include <optional>
#include <string>

#include "boundary/message_code.h"
#include "boundary/scripting_problem.h"

namespace torvell {

// Where the advice is read: it names only what is to be found there.
enum class Reader { CommandLine, Window };

struct MessageAdvice {
  const char* cause;   // the likely one
  const char* done;    // what the program did about it
  const char* remedy;  // what the reader can do
};

// The advice for a reported message; nothing for one that says all this itself, and for one whose
// code was not kept. Any thread.
std::optional<MessageAdvice> AdviceFor(rvx::MessageCode code, Reader reader);

// The same in three lines, each with its heading; empty without advice.
std::string AdviceText(rvx::MessageCode code, Reader reader);

// Why the instrument did not do what was asked for, in sentences, and where to look.
std::string ProblemText(const rvx::ScriptingProblem& problem, Reader reader);

}  // namespace torvell
