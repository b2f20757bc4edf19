// standards: the laboratory's calibration standards. The list works without an instrument.
#include <fmt/format.h>

#include "boundary/host.h"
#include "boundary/standards_text.h"
#include "host/cli/commands.h"
#include "host/cli/failure.h"
#include "host/cli/session.h"
#include "host/cli/standards_access.h"
#include "host/cli/table.h"
#include "host/core/users.h"
#include "host/tray/number_text.h"
#include "host/tray/tray_access.h"
#include "platform/text.h"

namespace torvell {

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

namespace {

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

// "A: the group file names no standard; C: ..."
std::string LacksText(const rvx::ConformityOfTemperature& entry) {
  std::string text;
  for (const auto& lack : entry.lacks) {
    text += fmt::format("{}{}: {}", text.empty() ? "" : "; ", lack.group, lack.reason);
  }
  return text;
}

Json ConformityJson(const rvx::ConformityOfTemperature& entry) {
  Json lacks = Json::array();
  for (const auto& lack : entry.lacks) {
    lacks.push_back({{"group", lack.group}, {"reason", lack.reason}});
  }
  return {{"temperature", entry.temperature},
          {"conforms", entry.conforms},
          {"standards", entry.standards},
          {"lacks", lacks}};
}

int ShowConformity(Session& session, const std::optional<double>& temperature) {
  rvx::ConformityReport report;
  ThrowIfRefused(session.OneInstrument().scripting->GetConformity(report));
  if (report.groupRows == 0) {
    session.output().Notice(fmt::format(
        "note: no groups were read from {}. It says which standard belongs to which group; without "
        "it no temperature can be calibrated with a conforming set. Put the file there "
        "(examples/StandardGroups.txt shows its form).",
        report.groupFile));
  }
  Json list = Json::array();
  Table table({{"temperature (degC)", Table::Align::Right},
               {"conforms"},
               {"standards"},
               {"lacking groups"}});
  for (const rvx::ConformityOfTemperature& entry : report.temperatures) {
    if (temperature && *temperature != entry.temperature) continue;
    list.push_back(ConformityJson(entry));
    table.AddRow({ExactNumber(entry.temperature), entry.conforms ? "yes" : "no",
                  fmt::format("{}", fmt::join(entry.standards, ", ")), LacksText(entry)});
  }
  if (list.empty()) {
    throw CommandFailure(ExitCode::BadUse,
                         fmt::format("{} is no calibration temperature of this instrument. See "
                                     "\"torvell constants show\" for those there are.",
                                     ExactNumber(*temperature)));
  }
  session.output().Result(list, table.Text());
  return static_cast<int>(ExitCode::Good);
}

int MakeTray(Session& session, const rvx::CalibrationTrayRequest& request) {
  session.RequireLevel(kLevelOperator, "fill a tray");
  const FoundInstrument& found = session.OneInstrument();
  ThrowIfRefused(found.scripting->MakeCalibrationTray(request));
  StoreTray(session.host(), found);
  CloseInterrupted(session.host(), found);
  Json list = Json::array();
  Table table({{"position", Table::Align::Right},
               {"sample id"},
               {"temperature (degC)", Table::Align::Right},
               {"known viscosity (mPa*s)", Table::Align::Right}});
  for (const TrayPosition& position : ReadTray(found)) {
    Json tests = Json::array();
    for (const rvx::SampleTest& test : position.tests.value_or(rvx::SampleTests()).tests) {
      tests.push_back({{"temperature", test.temperature},
                       {"knownViscosity", test.knownViscosity.value_or(0.0)}});
      table.AddRow({std::to_string(position.position + 1), position.sampleId,
                    ExactNumber(test.temperature), ExactNumber(test.knownViscosity.value_or(0.0))});
    }
    list.push_back(
        {{"position", position.position + 1}, {"sampleId", position.sampleId}, {"tests", tests}});
  }
  session.output().Result(list, table.Text());
  return static_cast<int>(ExitCode::Good);
}

void AddConformityCommands(const Command& standards) {
  const auto temperature = std::make_shared<std::optional<double>>();
  standards
      .AddCommand("conform", "at which temperatures they make up a set that conforms to ASTM D5293",
                  ShowConformity, temperature)
      .Add("--temperature", *temperature, "this one only")
      .Named("DEGC")
      .Decimal();

  const auto request = std::make_shared<rvx::CalibrationTrayRequest>();
  const Command tray = standards.AddCommand(
      "tray", "fill the tray with the conforming standards of these temperatures (level 10)",
      MakeTray, request);
  tray.Add("--temperature", request->temperatures, "one or more of those that conform")
      .Named("DEGC")
      .Required()
      .Decimal();
  tray.Add("--only", request->only, "use these standards alone").Named("NAME");
}

}  // namespace

void AddStandardsCommands(const Command& program) {
  const Command standards = program.AddGroup("standards", "the calibration standards");
  standards.AddCommand("list", "list them", ListStandards);

  const auto path = std::make_shared<std::string>();
  standards
      .AddCommand("import", "replace the whole list by a file's (level 50)", ImportStandards, path)
      .Add("FILE", *path, "CSV: name,temperature,known viscosity,lot")
      .Required();

  standards.AddCommand("export", "print them as such a file", ExportStandards);
  AddConformityCommands(standards);
}

}  // namespace torvell
