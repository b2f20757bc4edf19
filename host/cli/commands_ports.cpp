// ports: which device stands behind each port name. Works without an instrument.
#include <fmt/format.h>

#include "host/cli/commands.h"
#include "host/cli/registration.h"
#include "host/cli/session.h"
#include "host/cli/table.h"

namespace torvell {

namespace {

struct PortArguments {
  std::string name;
  std::string device;
  std::optional<std::string> settings;
};

int ListPorts(Session& session) {
  Json list = Json::array();
  Table table({{"port"}, {"device"}, {"settings (baud,u=in use)"}});
  for (const PortMapping& port : session.host().ports().List()) {
    const bool mapped = !port.device.empty();
    list.push_back({{"port", port.name},
                    {"device", mapped ? Json(port.device) : Json(nullptr)},
                    {"settings", mapped ? Json(port.settings) : Json(nullptr)}});
    table.AddRow({port.name, port.device, mapped ? port.settings : ""});
  }
  session.output().Result(list, table.Text());
  return static_cast<int>(ExitCode::Good);
}

int SetPort(Session& session, const PortArguments& arguments) {
  session.host().ports().SetMapping(arguments.name, arguments.device, arguments.settings);
  return ListPorts(session);
}

int ClearPort(Session& session, const PortArguments& arguments) {
  session.host().ports().ClearMapping(arguments.name);
  return ListPorts(session);
}

}  // namespace

void AddPortCommands(CLI::App& app, Invocation& invocation) {
  CLI::App& ports = AddCommandGroup(app, "ports", "the serial devices behind COM1 to COM4");
  AddCommand(ports, invocation, "list", "list them", ListPorts);

  const auto arguments = std::make_shared<PortArguments>();
  CLI::App& set = AddCommand(ports, invocation, "set", "put a device behind a port (level 50)",
                             SetPort, arguments);
  set.add_option("PORT", arguments->name, "COM1 to COM4")->required();
  set.add_option("DEVICE", arguments->device,
                 "as /dev/ttyUSB0 or, staying the same, below /dev/serial/by-id")
      ->required();
  set.add_option("--settings", arguments->settings, "rate, as 9600")->type_name("TEXT");

  AddCommand(ports, invocation, "clear", "take the device away (level 50)", ClearPort, arguments)
      .add_option("PORT", arguments->name, "COM1 to COM4")
      ->required();
}

}  // namespace torvell
