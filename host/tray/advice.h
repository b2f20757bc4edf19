// What to tell people about a message or a refusal of an instrument, chosen by its code. Only here
// does advice name the host's commands and menus, since the module knows neither.
#pragma once

#include <optional>
#include <string>

#include "boundary/message_code.h"
#include "boundary/scripting_problem.h"

namespace torvell {

// Where the advice is read: it only names what is available there.
enum class Reader { CommandLine, Window };

struct MessageAdvice {
  const char* cause;   // the likely one
  const char* done;    // what the program did about it
  const char* remedy;  // what the reader can do
};

// Returns the advice for a reported message; nothing if the message says all this itself or its
// code was not kept. Any thread.
std::optional<MessageAdvice> AdviceFor(rvx::MessageCode code, Reader reader);

// Returns the same in three lines, each with its heading; an empty text without advice.
std::string AdviceText(rvx::MessageCode code, Reader reader);

// Returns sentences that say why the instrument refused a request, and where to look.
std::string ProblemText(const rvx::ScriptingProblem& problem, Reader reader);

}  // namespace torvell
