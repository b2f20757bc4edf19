// standards: the laboratory's calibration standards. Works without an instrument.
#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "host/cli/commands.h"
#include "host/cli/failure.h"
#include "host/tray/number_text.h"
#include "host/cli/session.h"
#include "host/cli/standards_file.h"
#include "host/cli/table.h"
#include "host/core/users.h"
#include "instrument/host/host.h"
#include "instrument/host/standards_text.h"
#include "platform/text.h"

namespace torvell {

namespace {

std::vector<StandardRow> ReadStandards(Session& session) {
  session.host();
  std::string text;
  try {
    GetAnalysisArchive()->ReadAnalysisText(rvx::kStandardsArchiveName, rvx::kStandardsSection,
                                           text);
  } catch (rvx::CViscoException* error) {
    ThrowFromModule(error, "Reading the standards");
  }
  return ParseStandardsText(text);
}

int ShowStandards(Session& session, const std::vector<StandardRow>& rows) {
  Json list = Json::array();
  Table table({{"name"},
               {"temperature (degC)", Table::Align::Right},
               {"known viscosity (mPa*s)", Table::Align::Right},
               {"lot"}});
  for (const StandardRow& row : rows) {
    const std::string temperature = platform::RemoveBlanks(row.temperature);
    const auto degrees = platform::ParseDouble(temperature);
    const auto viscosity = platform::ParseDouble(row.viscosity);
    list.push_back({{"name", row.name},
                    {"temperature", degrees ? Json(*degrees) : Json(nullptr)},
                    {"knownViscosity", viscosity ? Json(*viscosity) : Json(nullptr)},
                    {"lot", row.lot}});
    table.AddRow({row.name, temperature, row.viscosity, row.lot});
  }
  session.output().Result(list, table.Text());
  return static_cast<int>(ExitCode::Good);
}

int ListStandards(Session& session) { return ShowStandards(session, ReadStandards(session)); }

int ExportStandards(Session& session) {
  const std::vector<StandardRow> rows = ReadStandards(session);
  if (session.output().json()) return ShowStandards(session, rows);
  session.output().Text(FormatStandardsFile(rows));
  return static_cast<int>(ExitCode::Good);
}

int ImportStandards(Session& session, const std::string& path) {
  std::vector<FileProblem> problems;
  const std::vector<StandardRow> rows = ParseStandardsFile(ReadWholeFile(path), problems);
  if (problems.empty() && rows.empty()) {
    problems.push_back({0, 0, "", "no line behind the heading", "at least one standard"});
  }
  if (!problems.empty()) throw CommandFailure(ExitCode::BadUse, FormatProblems(path, problems));
  session.RequireLevel(kLevelManager, "import standards");
  try {
    GetAnalysisArchive()->WriteAnalysisText(rvx::kStandardsArchiveName, rvx::kStandardsSection,
                                            FormatStandardsText(rows));
  } catch (rvx::CViscoException* error) {
    ThrowFromModule(error, "Storing the standards");
  }
  session.output().Progress(
      fmt::format("{}: {} values are now the list of standards", path, rows.size()));
  return ListStandards(session);
}

}  // namespace

void AddStandardsCommands(CLI::App& app, Invocation& invocation) {
  CLI::App* standards = app.add_subcommand("standards", "the calibration standards");
  standards->require_subcommand(1);
  CLI::App* list = standards->add_subcommand("list", "list them");
  list->callback([&invocation] { invocation.command = ListStandards; });

  CLI::App* import =
      standards->add_subcommand("import", "replace the whole list by a file's (level 50)");
  const auto path = std::make_shared<std::string>();
  import->add_option("FILE", *path, "CSV: name,temperature,known viscosity,lot")->required();
  import->callback([&invocation, path] {
    invocation.command = [path](Session& session) { return ImportStandards(session, *path);
};
}  // namespace torvell
);

CLI::App* exported = standards->add_subcommand("export", "print them as such a file");
exported->callback([&invocation] { invocation.command = ExportStandards; });
}

}  // namespace torvell
