// simulate: the oils that the simulated instrument finds in its tray. Works without an instrument.
#include <fmt/format.h>

#include "boundary/host.h"
#include "boundary/simulated_oils_text.h"
#include "host/cli/commands.h"
#include "host/cli/failure.h"
#include "host/cli/oils_file.h"
#include "host/cli/session.h"
#include "host/cli/standards_access.h"
#include "host/cli/table.h"
#include "host/core/users.h"
#include "host/tray/number_text.h"

namespace torvell {

namespace {

std::vector<OilRow> ReadOils(Session& session) {
  session.host();
  std::string text;
  try {
    GetAnalysisArchive()->ReadAnalysisText(rvx::kSimulatedOilsArchiveName,
                                           rvx::kSimulatedOilsSection, text);
  } catch (rvx::CViscoException* error) {
    ThrowFromModule(error, "Reading the simulated oils");
  }
  return ParseOilsText(text);
}

int ShowOils(Session& session) {
  Json list = Json::array();
  Table table({{"position", Table::Align::Right},
               {"temperature (degC)", Table::Align::Right},
               {"true viscosity (mPa*s)", Table::Align::Right}});
  for (const OilRow& row : ReadOils(session)) {
    list.push_back({{"position", row.position},
                    {"temperature", row.temperature},
                    {"trueViscosity", row.viscosity}});
    table.AddRow(
        {std::to_string(row.position), ExactNumber(row.temperature), ExactNumber(row.viscosity)});
  }
  session.output().Result(
      list, table.rows() == 0 ? "no oils: the simulated rotor turns at 240 rpm in everything\n"
                              : table.Text());
  return static_cast<int>(ExitCode::Good);
}

int StoreOils(Session& session, const std::vector<OilRow>& rows) {
  session.RequireLevel(kLevelManager, "change the simulated oils");
  try {
    GetAnalysisArchive()->WriteAnalysisText(rvx::kSimulatedOilsArchiveName,
                                            rvx::kSimulatedOilsSection, FormatOilsText(rows));
  } catch (rvx::CViscoException* error) {
    ThrowFromModule(error, "Storing the simulated oils");
  }
  return ShowOils(session);
}

int TakeOils(Session& session, const std::string& path) {
  std::vector<FileProblem> problems;
  const std::vector<OilRow> rows =
      ParseOilsFile(ReadWholeFile(path), ReadStandards(session), problems);
  if (problems.empty() && rows.empty()) {
    problems.push_back({0, 0, "", "no line behind the heading", "at least one oil"});
  }
  if (!problems.empty()) throw CommandFailure(ExitCode::BadUse, FormatProblems(path, problems));
  return StoreOils(session, rows);
}

}  // namespace

void AddSimulateCommands(const Command& program) {
  const Command simulate =
      program.AddGroup("simulate", "what the simulated instrument finds in its tray");
  simulate.AddCommand("show", "list the oils", ShowOils);

  const auto path = std::make_shared<std::string>();
  simulate
      .AddCommand("oils",
                  "put oils of true viscosities into its tray, in place of those before (level 50)",
                  TakeOils, path)
      .Add("FILE", *path, "CSV: position,temperature,true viscosity")
      .Required();

  simulate.AddCommand("off",
                      "take them away: the rotor turns at 240 rpm in everything again (level 50)",
                      [](Session& session) { return StoreOils(session, {}); });
}

}  // namespace torvell
