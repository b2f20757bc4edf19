// torvell: the host application's command line.
#include <csignal>
#include <cstdio>

#include "host/cli/exit_codes.h"
#include "host/cli/failure.h"
#include "host/cli/parser.h"
#include "host/cli/session.h"

namespace torvell {

namespace {

ExitCode CodeOf(HostErrorKind kind) {
  switch (kind) {
    case HostErrorKind::BadInput:
      return ExitCode::BadUse;
    case HostErrorKind::NotAllowed:
      return ExitCode::NotAllowed;
    case HostErrorKind::ModuleMissing:
      return ExitCode::NoInstrument;
    case HostErrorKind::Tray:
      return ExitCode::RunFailed;
    case HostErrorKind::DataFolder:
    case HostErrorKind::Database:
    case HostErrorKind::NewerVersion:
    case HostErrorKind::OtherModule:
      break;
  }
  return ExitCode::DataFailure;
}

int Report(Output& output, ExitCode code, const std::string& message) {
  output.Error(message);
  return static_cast<int>(code);
}

// Runs the command; turns whatever it throws into a message and an exit code.
int RunCommand(const Invocation& invocation, Output& output) {
  try {
    if (invocation.program) return invocation.program(invocation.options);
    Session session(invocation.options, output);
    return invocation.command(session);
  } catch (const CommandFailure& failure) {
    return Report(output, failure.code(), failure.what());
  } catch (const HostError& error) {
    return Report(output, CodeOf(error.kind()), error.what());
  } catch (rvx::CViscoException* error) {
    try {
      ThrowFromModule(error, "The command");
    } catch (const CommandFailure& failure) {
      return Report(output, failure.code(), failure.what());
    }
  } catch (const std::exception& error) {
    return Report(output, ExitCode::DataFailure,
                  std::string("the command ended unexpectedly: ") + error.what());
  }
}

int RunInvocation(const Invocation& invocation) {
  Output output(invocation.options.json, invocation.options.quiet);
  const int code = RunCommand(invocation, output);
  if (output.Finish()) return code;
  return Report(output, ExitCode::DataFailure,
                "standard output takes no more: results are missing there. What was measured is in "
                "the archive (torvell samples).");
}

}  // namespace

}  // namespace torvell

int main(int argc, char** argv) {
  // A closed pipe must not end the program while an instrument is at work.
  std::signal(SIGPIPE, SIG_IGN);
  torvell::Invocation invocation;
  if (const auto code = torvell::ParseCommandLine(argc, argv, invocation)) return *code;
  return platform::RunUnderTimeBase(torvell::MakeTimeBase(invocation.options),
                                    [&invocation] { return torvell::RunInvocation(invocation); });
}
