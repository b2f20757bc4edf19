// One command's way to the host: opens the data folder, says who acts, finds instruments.
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

// Password lines of --password-fd in turn, or asked for on the terminal. CommandFailure (bad use)
// where there is neither.
std::string NextPassword(const GlobalOptions& options, const std::string& question);

// Who acts: --user, whose password is checked, or TORVELL_USER; may be empty or unknown.
// CommandFailure (not allowed, bad use).
std::string ActingUserOf(const GlobalOptions& options, Users& users);

// The main thread's.
class Session {
 public:
  Session(const GlobalOptions& options, Output& output);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const GlobalOptions& options() const { return options_; }
  Output& output() { return output_; }
  ConsolePrompter& prompter() { return prompter_; }

  // The host, opened at the first call: the acting user is checked, and what a person has to know
  // about the data folder is said. CommandFailure or HostError if that fails.
  Host& host();

  // CommandFailure (not allowed) if the acting user's level is below `level`; `what` completes
  // "To <what> ...".
  void RequireLevel(int32_t level, const std::string& what);

  // Looks for instruments at the first call. CommandFailure (no instrument) if there is none, with
  // the reason for each port.
  const std::vector<FoundInstrument>& Instruments();
  // The one that --instrument names, or the only one. CommandFailure (bad use) if it isn't clear.
  const FoundInstrument& OneInstrument();
  // The one of this name: a port, an archive key or an index. CommandFailure (bad use) if none is.
  const FoundInstrument& NamedInstrument(const std::string& name);

  // Waits for the instrument's first status. CommandFailure (no instrument) if none comes.
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

// Raises the failure that goes with a problem of the instrument's; nothing happens without one.
void ThrowIfRefused(const rvx::ScriptingResult& result);

// Takes over, ends and deletes a failure of the module as a CommandFailure; `what` completes
// "<what> failed: ...". Call it with the caught pointer.
[[noreturn]] void ThrowFromModule(rvx::CViscoException* error, const std::string& what);

}  // namespace torvell
