// discover, status, monitor: which instruments there are, and their readings.
#include <fmt/format.h>

#include <limits>

#include "host/cli/commands.h"
#include "host/cli/json_records.h"
#include "host/cli/session.h"
#include "host/cli/table.h"
#include "host/tray/number_text.h"
#include "platform/interrupt.h"

namespace torvell {

namespace {

// How long a signal may go unnoticed while an instrument sends nothing.
constexpr platform::Milliseconds kLookAround{1000};

std::string Joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += (all.empty() ? "" : ", ") + text;
  return all;
}

int Discover(Session& session) {
  Json list = Json::array();
  Table table({{"port"},
               {"address", Table::Align::Right},
               {"model"},
               {"options"},
               {"firmware"},
               {"serial number"},
               {"simulated"}});
  for (const FoundInstrument& found : session.Instruments()) {
    const rvx::InstrumentIdentity& identity = found.identity;
    list.push_back(IdentityJson(identity));
    table.AddRow({identity.portName, std::to_string(identity.address), identity.model,
                  Joined(identity.options), identity.firmware, identity.serialNumber,
                  identity.simulated ? "yes" : "no"});
  }
  session.output().Result(list, table.Text());
  return static_cast<int>(ExitCode::Good);
}

std::string ReadingsText(const rvx::InstrumentReadings& readings) {
  Table table({{"reading"}, {"value", Table::Align::Right}, {"unit"}});
  table.AddRow({"temperature", FixedNumber(readings.temperature, 2), "degC"});
  table.AddRow({"target temperature",
                readings.targetTemperature ? FixedNumber(*readings.targetTemperature, 2) : "",
                "degC"});
  table.AddRow({"speed", FixedNumber(readings.speed, 5), "rpm/1000"});
  table.AddRow({"+VSS", FixedNumber(readings.plusVss, 2), "V"});
  table.AddRow({"-VSS", FixedNumber(readings.minusVss, 2), "V"});
  table.AddRow({"operation", readings.operationText, ""});
  table.AddRow({readings.countsDown ? "time remaining" : "time elapsed",
                std::to_string(readings.seconds), "s"});
  table.AddRow({"machine status", readings.machineStatusText, ""});
  table.AddRow({"switch byte", fmt::format("0x{:02X}", readings.switchByte), ""});
  table.AddRow({"error code", fmt::format("0x{:02X}", readings.errorCode), ""});
  table.AddRow({"int count", std::to_string(readings.intCount), ""});
  return table.Text();
}

int Status(Session& session) {
  const FoundInstrument& found = session.OneInstrument();
  session.WaitForStatus(found);
  const rvx::InstrumentReadings readings = found.scripting->GetReadings();
  session.output().Result(ReadingsJson(readings), ReadingsText(readings));
  return static_cast<int>(ExitCode::Good);
}

void ShowReading(Output& output, const rvx::InstrumentReadings& readings) {
  if (output.json()) {
    output.Line(ReadingsJson(readings));
    return;
  }
  output.Text(fmt::format(
      "{:>5}  {:>8}  {:>8}  {:>8}  {}  {}\n", readings.intCount,
      FixedNumber(readings.temperature, 2),
      readings.targetTemperature ? FixedNumber(*readings.targetTemperature, 2) : "-",
      FixedNumber(readings.speed, 5), readings.operationText, readings.machineStatusText));
}

// Prints each status frame with a new count, until `most` lines are printed, the user interrupts or
// the output is closed.
int Monitor(Session& session, int64_t most) {
  const FoundInstrument& found = session.OneInstrument();
  platform::InterruptWatch interrupts;
  Output& output = session.output();
  if (!output.json()) {
    output.Text("count  temp/degC  target/degC  speed/(rpm/1000)  operation  machine status\n");
  }
  session.WaitForStatus(found);
  uint64_t seen = 0;
  std::optional<uint16_t> lastCount;
  for (int64_t printed = 0; printed < most;) {
    const bool fresh =
        found.scripting->WaitForReadings(seen, platform::Deadline::After(kLookAround));
    if (interrupts.count() > 0) return static_cast<int>(ExitCode::Interrupted);
    if (!fresh) continue;
    const rvx::InstrumentReadings readings = found.scripting->GetReadings();
    seen = readings.sequence;
    if (lastCount == readings.intCount) continue;
    lastCount = readings.intCount;
    ShowReading(output, readings);
    ++printed;
    if (output.OutputLost()) break;
  }
  return static_cast<int>(ExitCode::Good);
}

}  // namespace

void AddReadingCommands(const Command& program) {
  program.AddCommand("discover", "look for instruments and list them", Discover);
  program.AddCommand("status", "the present readings", Status);

  const auto most = std::make_shared<int64_t>(std::numeric_limits<int64_t>::max());
  program.AddCommand("monitor", "the readings, a line for each new count", Monitor, most)
      .Add("--count", *most, "end after this many lines")
      .Named("N")
      .Whole(1);
}

}  // namespace torvell
