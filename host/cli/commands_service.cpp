// service: the manual commands.
#include <fmt/format.h>

#include "boundary/action_keys.h"
#include "host/cli/action_run.h"
#include "host/cli/commands.h"
#include "host/cli/failure.h"
#include "host/cli/json_records.h"
#include "host/cli/session.h"
#include "host/core/users.h"
#include "platform/text.h"

namespace torvell {

namespace {

// What a command of the instrument can hold; the tray and the axes have smaller limits.
constexpr int64_t kMaxPosition = 256;
constexpr int64_t kMaxSteps = 65535;

int Done(Session& session, const std::string& what) {
  session.output().Result({{"command", what}, {"done", true}}, what + ": done\n");
  return static_cast<int>(ExitCode::Good);
}

const FoundInstrument& Prepare(Session& session, const std::string& what) {
  session.RequireLevel(kLevelOperator, what);
  return session.OneInstrument();
}

int Home(Session& session) {
  ThrowIfRefused(Prepare(session, "set the home position").scripting->SetHomeFlag());
  return Done(session, "home");
}

int Temperature(Session& session, const std::string& text) {
  std::optional<double> celsius;
  if (platform::CompareNoCase(text, "off") != 0) {
    celsius = platform::ParseDouble(text);
    if (!celsius) {
      throw CommandFailure(
          ExitCode::BadUse,
          fmt::format("temperature: found \"{}\"; accepted: degrees C with a point "
                      "as decimal sign, or off. Nothing was done.",
                      text));
    }
  }
  ThrowIfRefused(Prepare(session, "set the temperature").scripting->SetTemperature(celsius));
  return Done(session, "temperature");
}

int RunServiceAction(Session& session, int32_t index, const std::string& context,
                     const std::string& what) {
  const FoundInstrument& found = Prepare(session, what);
  ThrowIfRefused(found.scripting->MayServe());
  const ExitCode code = RunAction(session, found, index, context);
  if (code != ExitCode::Good) return static_cast<int>(code);
  return Done(session, what);
}

int Move(Session& session, int position) {
  // People count from 1, as on the tray and in its file; the context counts from 0.
  return RunServiceAction(session, rvx::kMoveStepperAction, fmt::format("0,{}", position - 1),
                          "move");
}

int Precondition(Session& session) {
  return RunServiceAction(session, rvx::kPreconditionMotorAction, "0,0", "precondition");
}

// The numbers of the switch and of its state, as the parser delivers them.
struct SwitchArguments {
  int which = 0;
  int on = 0;
};

int Switch(Session& session, const SwitchArguments& arguments) {
  ThrowIfRefused(Prepare(session, "switch")
                     .scripting->SetSwitch(static_cast<rvx::ServiceSwitch>(arguments.which),
                                           arguments.on != 0));
  return Done(session, "switch");
}

int SelfTest(Session& session) {
  std::vector<std::string> failures;
  ThrowIfRefused(Prepare(session, "run the self test").scripting->RunSelfTest(failures));
  std::string text = failures.empty() ? "self test: passed\n" : "self test: failed\n";
  for (const std::string& failure : failures) text += "  " + failure + "\n";
  session.output().Result({{"command", "selftest"}, {"failures", failures}}, text);
  return static_cast<int>(failures.empty() ? ExitCode::Good : ExitCode::RunFailed);
}

int AbortOperation(Session& session) {
  ThrowIfRefused(Prepare(session, "abort").scripting->AbortOperation());
  return Done(session, "abort");
}

struct JogArguments {
  int axis = 0;
  int32_t target = 0;
};

int Jog(Session& session, const JogArguments& arguments) {
  ThrowIfRefused(
      Prepare(session, "move a stepper")
          .scripting->JogAxis(static_cast<rvx::ServiceAxis>(arguments.axis), arguments.target));
  return Done(session, "jog");
}

template <class Choice>
std::map<std::string, int> Numbered(const std::map<std::string, Choice>& choices) {
  std::map<std::string, int> numbers;
  for (const auto& [name, choice] : choices) numbers[name] = static_cast<int>(choice);
  return numbers;
}

void AddSwitch(const Command& service) {
  using rvx::ServiceSwitch;
  const auto arguments = std::make_shared<SwitchArguments>();
  const Command command =
      service.AddCommand("switch", "one of the instrument's switches", Switch, arguments);
  command.Add("WHICH", arguments->which, "injection, motor, cooling or auto")
      .Required()
      .OneOf(Numbered<ServiceSwitch>({{"injection", ServiceSwitch::Injection},
                                      {"motor", ServiceSwitch::Motor},
                                      {"cooling", ServiceSwitch::Cooling},
                                      {"auto", ServiceSwitch::AutoReport}}));
  command.Add("STATE", arguments->on, "on or off").Required().OneOf({{"on", 1}, {"off", 0}});
}

void AddJog(const Command& service) {
  using rvx::ServiceAxis;
  const auto arguments = std::make_shared<JogArguments>();
  const Command command =
      service.AddCommand("jog", "move one stepper to a target in steps", Jog, arguments);
  command.Add("AXIS", arguments->axis, "tube, table or trolley")
      .Required()
      .OneOf(Numbered<ServiceAxis>({{"tube", ServiceAxis::Tube},
                                    {"table", ServiceAxis::Table},
                                    {"trolley", ServiceAxis::Trolley}}));
  command.Add("TARGET", arguments->target, "tube 0 to 942, table 0 to 615, trolley 0 to 1620")
      .Required()
      .Whole(0, kMaxSteps);
}

}  // namespace

void AddServiceCommands(const Command& program) {
  const Command service = program.AddGroup("service", "manual commands (level 10)");
  service.AddCommand("home", "take the present stepper positions as home", Home);
  service.AddCommand("precondition", "run the rotor for the precondition time", Precondition);
  service.AddCommand("selftest", "ask for the self test's result", SelfTest);
  service.AddCommand("abort", "end the present operation", AbortOperation);

  const auto temperature = std::make_shared<std::string>();
  service
      .AddCommand("temperature", "set the cell's target temperature, or off", Temperature,
                  temperature)
      .Add("CELSIUS", *temperature, "degrees C, or off")
      .Required();

  const auto position = std::make_shared<int>(0);
  service.AddCommand("move", "move to a tray position", Move, position)
      .Add("POSITION", *position, "from 1")
      .Required()
      .Whole(1, kMaxPosition);
  AddSwitch(service);
  AddJog(service);
}

}  // namespace torvell
