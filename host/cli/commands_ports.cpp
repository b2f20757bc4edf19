// ports: which device stands behind each port name. Works without an instrument.
#include <fmt/format.h>

#include <CLI/CLI.hpp>

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

void AddPortCommands(CLI::App& app, Invocation& invocation) {
  CLI::App* ports = app.add_subcommand("ports", "the serial devices behind COM1 to COM4");
  ports->require_subcommand(1);
  CLI::App* list = ports->add_subcommand("list", "list them");
  list->callback([&invocation] { invocation.command = ListPorts; });

  const auto arguments = std::make_shared<PortArguments>();
  CLI::App* set = ports->add_subcommand("set", "put a device behind a port (level 50)");
  set->add_option("PORT", arguments->name, "COM1 to COM4")->required();
  set->add_option("DEVICE", arguments->device,
                  "as /dev/ttyUSB0 or, staying the same, below /dev/serial/by-id")
      ->required();
  set->add_option("--settings", arguments->settings, "rate, as 9600")->type_name("TEXT");
  set->callback([&invocation, arguments] {
    invocation.command = [arguments](Session& session) { return SetPort(session, *arguments); };
  });

  CLI::App* clear = ports->add_subcommand("clear", "take the device away (level 50)");
  clear->add_option("PORT", arguments->name, "COM1 to COM4")->required();
  clear->callback([&invocation, arguments] {
    invocation.command = [arguments](Session& session) { return ClearPort(session, *arguments); };
  });
}

}  // namespace torvell
