// ports: which device belongs to each port name. Works without an instrument.
#include <fmt/format.h>

#include "host/cli/commands.h"
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

void AddPortCommands(const Command& program) {
  const Command ports = program.AddGroup("ports", "the serial devices behind COM1 to COM4");
  ports.AddCommand("list", "list them", ListPorts);

  const auto arguments = std::make_shared<PortArguments>();
  const Command set =
      ports.AddCommand("set", "put a device behind a port (level 50)", SetPort, arguments);
  set.Add("PORT", arguments->name, "COM1 to COM4").Required();
  set.Add("DEVICE", arguments->device,
          "as /dev/ttyUSB0 or, staying the same, below /dev/serial/by-id")
      .Required();
  set.Add("--settings", arguments->settings, "rate, as 9600").Named("TEXT");

  ports.AddCommand("clear", "take the device away (level 50)", ClearPort, arguments)
      .Add("PORT", arguments->name, "COM1 to COM4")
      .Required();
}

}  // namespace torvell
