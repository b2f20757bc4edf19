#include "host/cli/session.h"

#include <fmt/format.h>

#include <cstdlib>

#include "host/cli/failure.h"
#include "host/cli/terminal.h"
#include "host/tray/advice.h"
#include "host/tray/preparation.h"
#include "platform/text.h"

namespace torvell {

namespace {

bool IsVirtual() { return platform::CurrentTimeBase() == platform::TimeBaseKind::Virtual; }

ExitCode CodeOf(rvx::ScriptingProblem::Kind kind) {
  switch (kind) {
    case rvx::ScriptingProblem::Kind::BadValue:
      return ExitCode::BadUse;
    case rvx::ScriptingProblem::Kind::NotAllowed:
      return ExitCode::NotAllowed;
    case rvx::ScriptingProblem::Kind::NoAnswer:
      return ExitCode::NoInstrument;
    case rvx::ScriptingProblem::Kind::Archive:
      return ExitCode::DataFailure;
    case rvx::ScriptingProblem::Kind::Busy:
    case rvx::ScriptingProblem::Kind::Refused:
      break;
  }
  return ExitCode::RunFailed;
}

}  // namespace

Session::Session(const GlobalOptions& options, Output& output)
    : options_(options), output_(output), prompter_(output) {
  platform::SetPrompter(&prompter_);
}

Session::~Session() {
  host_.reset();
  platform::SetPrompter(nullptr);
}

Host& Session::host() {
  if (host_) return *host_;
  HostOptions options;
  options.dataFolder = options_.dataFolder;
  options.simulate = options_.simulate;
  if (IsVirtual()) options.seed = options_.seed;
  host_ = Host::Open(options);
  const std::string user = ActingUserOf(options_, host_->users());
  host_->users().SetActingUser(user);
  SayWhoActs(user);
  for (const std::string& notice : host_->notices()) output_.Notice(notice);
  return *host_;
}

std::string NextPassword(const GlobalOptions& options, const std::string& question) {
  std::optional<std::string> password;
  if (options.passwordDescriptor) {
    password = ReadLineFrom(*options.passwordDescriptor);
    if (!password) {
      throw CommandFailure(
          ExitCode::BadUse,
          fmt::format("no password came from descriptor {}. Nothing was done. Give "
                      "one line for each password that is needed.",
                      *options.passwordDescriptor));
    }
    return *password;
  }
  password = AskPassword(question);
  if (!password) {
    throw CommandFailure(ExitCode::BadUse,
                         "a password is needed and there is no terminal to ask for it. Nothing was "
                         "done. Give it with --password-fd.");
  }
  return *password;
}

std::string ActingUserOf(const GlobalOptions& options, Users& users) {
  if (options.user.empty()) {
    const char* name = std::getenv("TORVELL_USER");
    return name == nullptr ? "" : name;
  }
  const std::string password = NextPassword(options, fmt::format("Password of {}: ", options.user));
  if (!users.Authenticate(options.user, password)) {
    throw CommandFailure(ExitCode::NotAllowed,
                         fmt::format("\"{}\" was not accepted: there is no such user, or the "
                                     "password is another. Nothing was done.",
                                     options.user));
  }
  return options.user;
}

void Session::SayWhoActs(const std::string& user) {
  if (host_->users().IsEmpty()) {
    output_.Notice(
        "note: this data folder has no users, so you act at level 100 (torvell users add)");
  } else if (!user.empty() && !host_->users().Exists(user)) {
    output_.Notice(fmt::format(
        "note: TORVELL_USER is \"{}\", who is no user here: level 0, reading only", user));
  }
}

void Session::RequireLevel(int32_t level, const std::string& what) {
  host().users().Require(level, what);
}

const std::vector<FoundInstrument>& Session::Instruments() {
  if (discovered_) return instruments_;
  Host& opened = host();
  if (!options_.simulate) output_.Progress("looking for instruments ...");
  opened.DiscoverInstruments();
  discovered_ = true;
  int32_t index = 0;
  for (const InstrumentEntry& entry : opened.instruments().Entries()) {
    FoundInstrument found;
    static_cast<InstrumentEntry&>(found) = entry;
    found.index = index++;
    // Without the scripting interface no command can use the instrument.
    if (found.scripting != nullptr) instruments_.push_back(found);
  }
  if (instruments_.empty()) throw CommandFailure(ExitCode::NoInstrument, WhyNoInstrument());
  return instruments_;
}

const FoundInstrument& Session::OneInstrument() {
  if (!options_.instrument.empty()) return NamedInstrument(options_.instrument);
  const auto& all = Instruments();
  if (all.size() == 1) return all.front();
  std::string list;
  for (const FoundInstrument& found : all) {
    list += fmt::format("\n  {}  {}  {}", found.identity.portName, found.identity.archiveKey,
                        found.identity.model);
  }
  throw CommandFailure(ExitCode::BadUse,
                       "several instruments are there; say which with --instrument:" + list);
}

const FoundInstrument& Session::NamedInstrument(const std::string& name) {
  const std::optional<int> index = platform::ParseInt(name);
  std::string known;
  for (const FoundInstrument& found : Instruments()) {
    if (platform::CompareNoCase(name, found.identity.portName) == 0 ||
        name == found.identity.archiveKey || index == found.index) {
      return found;
    }
    known += (known.empty() ? "" : ", ") + found.identity.portName;
  }
  throw CommandFailure(ExitCode::BadUse,
                       fmt::format("found \"{}\"; accepted: {}, the key of one of them, or its "
                                   "number from 0. Nothing was done.",
                                   name, known));
}

std::string Session::WhyNoInstrument() {
  std::string text = "no instrument was found.";
  if (platform::CurrentTimeBase() != platform::TimeBaseKind::Real) {
    text += " A real instrument keeps real time: its port is not opened under --clock " +
            options_.clock + ". Leave --clock out, or add --simulate.";
  }
  for (const PortMapping& port : host().ports().List()) {
    const std::string failure = host().ports().LastFailure(port.name);
    if (port.device.empty()) {
      text += fmt::format("\n  {}: no device is set (torvell ports set {} DEVICE)", port.name,
                          port.name);
    } else if (!failure.empty()) {
      text += fmt::format("\n  {}: {}", port.name, failure);
    } else {
      text += fmt::format("\n  {}: {} was opened and no RVX answered; check power, cable and rate",
                          port.name, port.device);
    }
  }
  return text;
}

void Session::WaitForStatus(const FoundInstrument& found) {
  try {
    torvell::WaitForStatus(found);
  } catch (const HostError& error) {
    throw CommandFailure(ExitCode::NoInstrument, error.what());
  }
}

std::string Session::Password(const std::string& question) {
  return NextPassword(options_, question);
}

void ThrowIfRefused(const rvx::ScriptingResult& result) {
  if (!result) return;
  throw CommandFailure(CodeOf(result->kind()), ProblemText(*result, Reader::CommandLine));
}

void ThrowFromModule(rvx::CViscoException* error, const std::string& what) {
  const std::unique_ptr<rvx::CViscoException> owner(error);
  const std::string reason = error->GetRecord().message;
  ExitCode code = ExitCode::RunFailed;
  if (dynamic_cast<rvx::ArchiveException*>(error) != nullptr) code = ExitCode::DataFailure;
  if (dynamic_cast<rvx::InvalidException*>(error) != nullptr) code = ExitCode::BadUse;
  throw CommandFailure(
      code, fmt::format("{} failed: {}", what, reason.empty() ? "no reason was given" : reason));
}

}  // namespace torvell
