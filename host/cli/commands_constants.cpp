// constants: the cell constants of each calibration temperature.
#include <fmt/format.h>

#include "host/cli/commands.h"
#include "host/cli/session.h"
#include "host/cli/table.h"
#include "host/core/users.h"
#include "host/tray/number_text.h"

namespace torvell {

namespace {

struct ConstantsValues {
  double temperature = 0.0;
  double b0 = 0.0;
  double b1 = 0.0;
  double b2 = 0.0;
};

int ShowConstants(Session& session) {
  Json list = Json::array();
  Table table({{"temperature (degC)", Table::Align::Right},
               {"B0", Table::Align::Right},
               {"B1", Table::Align::Right},
               {"B2", Table::Align::Right},
               {"date"}});
  for (const rvx::CellConstants& slot : session.OneInstrument().scripting->GetCellConstants()) {
    const std::string date = TimeText(slot.date);
    list.push_back({{"temperature", slot.temperature},
                    {"b0", NumberOrNull(slot.b0)},
                    {"b1", NumberOrNull(slot.b1)},
                    {"b2", NumberOrNull(slot.b2)},
                    {"date", slot.empty || date.empty() ? Json(nullptr) : Json(date)},
                    {"empty", slot.empty}});
    if (slot.empty) {
      table.AddRow({ExactNumber(slot.temperature)});
    } else {
      table.AddRow({ExactNumber(slot.temperature), ExactNumber(slot.b0), ExactNumber(slot.b1),
                    ExactNumber(slot.b2), date});
    }
  }
  session.output().Result(list, table.Text());
  return static_cast<int>(ExitCode::Good);
}

int SetConstants(Session& session, const ConstantsValues& values) {
  session.RequireLevel(kLevelManager, "set cell constants");
  rvx::InstrumentScripting& instrument = *session.OneInstrument().scripting;
  ThrowIfRefused(instrument.SetCellConstants(values.temperature, values.b0, values.b1, values.b2));
  for (const rvx::CellConstants& slot : instrument.GetCellConstants()) {
    if (slot.temperature != values.temperature) continue;
    if (slot.b0 == values.b0 && slot.b1 == values.b1 && slot.b2 == values.b2) continue;
    session.output().Notice(
        fmt::format("note: the constants were rounded to whole numbers: B0 {} B1 {} B2 {}",
                    ExactNumber(slot.b0), ExactNumber(slot.b1), ExactNumber(slot.b2)));
  }
  return ShowConstants(session);
}

}  // namespace

void AddConstantsCommands(const Command& program) {
  const Command constants = program.AddGroup("constants", "the cell constants");
  constants.AddCommand("show", "list them with their dates", ShowConstants);

  const auto values = std::make_shared<ConstantsValues>();
  const Command set = constants.AddCommand(
      "set", "set the constants of one calibration temperature (level 50); 0 0 0 empties it",
      SetConstants, values);
  set.Add("TEMPERATURE", values->temperature, "degrees C").Required().Decimal();
  set.Add("B0", values->b0).Required().Decimal();
  set.Add("B1", values->b1).Required().Decimal();
  set.Add("B2", values->b2).Required().Decimal();
}

}  // namespace torvell
