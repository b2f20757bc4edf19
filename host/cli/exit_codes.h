// The exit codes of torvell, a contract with scripts. The man page lists them too.
#pragma once

namespace torvell {

enum class ExitCode {
  Good = 0,
  RunFailed = 1,     // the run ended with reported errors or without a sample that was due
  BadUse = 2,        // bad use or bad input
  NoInstrument = 3,  // none found, or it doesn't answer
  NotAllowed = 4,    // not allowed for this user
  DataFailure = 5,   // archive or data failure, or parts of the program that do not belong together
  Interrupted = 130
};

}  // namespace torvell
