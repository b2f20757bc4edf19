// Gives a command the host: opens the data folder, establishes who acts, finds instruments.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "boundary/instrument_scripting.h"
#include "boundary/viscometer_instrument.h"
#include "host/cli/console_prompter.h"
#include "host/cli/exit_codes.h"
#include "host/cli/options.h"
#include "host/cli/output.h"
#include "host/core/host.h"

namespace torvell {

// An instrument that was found; owned by the host.
struct FoundInstrument : InstrumentEntry {
  int32_t index = 0;  // in the host's list
};

// Returns the next password: the next line of --password-fd, or what is typed on the terminal.
// CommandFailure (bad use) if there is neither.
std::string NextPassword(const GlobalOptions& options, const std::string& question);

// Returns who acts: --user, whose password is checked, or TORVELL_USER; may be empty or unknown.
// CommandFailure (not allowed, bad use).
std::string ActingUserOf(const GlobalOptions& options, Users& users);

// What a command works with. The main thread only.
class Session {
 public:
  Session(const GlobalOptions& options, Output& output);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const GlobalOptions& options() const { return options_; }
  Output& output() { return output_; }
  ConsolePrompter& prompter() { return prompter_; }

  // Returns the host. The first call opens it, checks the acting user, and prints the notices about
  // the data folder. CommandFailure or HostError on failure.
  Host& host();

  // CommandFailure (not allowed) if the acting user's level is below `level`; `what` completes
  // "To <what> ...".
  void RequireLevel(int32_t level, const std::string& what);

  // Returns the instruments; the first call looks for them. CommandFailure (no instrument) if there
  // is none, with the reason for each port.
  const std::vector<FoundInstrument>& Instruments();
  // Returns the instrument that --instrument names, or the only one. CommandFailure (bad use) if it
  // isn't clear which is meant.
  const FoundInstrument& OneInstrument();
  // Returns the instrument of this name: a port, an archive key or an index. CommandFailure (bad
  // use) if there is none.
  const FoundInstrument& NamedInstrument(const std::string& name);

  // Waits for the instrument's first status. CommandFailure (no instrument) if none arrives in
  // time.
  void WaitForStatus(const FoundInstrument& found);

  std::string Password(const std::string& question);

 private:
  void SayWhoActs(const std::string& user);
  std::string WhyNoInstrument();

  const GlobalOptions& options_;
  Output& output_;
  ConsolePrompter prompter_;
  std::unique_ptr<Host> host_;
  bool discovered_ = false;
  std::vector<FoundInstrument> instruments_;
};

// Throws the failure for a problem of the instrument; does nothing if there is no problem.
void ThrowIfRefused(const rvx::ScriptingResult& result);

// Turns a failure of the module into a CommandFailure and deletes it; `what` completes "<what>
// failed: ...". Call it with the caught pointer.
[[noreturn]] void ThrowFromModule(rvx::CViscoException* error, const std::string& what);

}  // namespace torvell
