// tray: what the positions of an instrument's tray hold.
#include <fmt/format.h>

#include "host/cli/commands.h"
#include "host/cli/session.h"
#include "host/cli/table.h"
#include "host/core/users.h"
#include "host/tray/number_text.h"
#include "host/tray/tray_access.h"

namespace torvell {

namespace {

// Returns what is known of a position from an interrupted run; null if nothing is.
const InterruptedPosition* FindInterrupted(const std::optional<InterruptedTray>& interrupted,
                                           int position) {
  if (!interrupted) return nullptr;
  for (const InterruptedPosition& each : interrupted->positions) {
    if (each.position == position) return &each;
  }
  return nullptr;
}

Json TestsJson(const TrayPosition& position) {
  Json tests = Json::array();
  if (!position.tests) return tests;
  for (const rvx::SampleTest& test : position.tests->tests) {
    Json object = {
        {"temperature", test.temperature}, {"rotorOnTime", nullptr}, {"knownViscosity", nullptr}};
    if (test.rotorOnTime) object["rotorOnTime"] = *test.rotorOnTime;
    if (test.knownViscosity) object["knownViscosity"] = *test.knownViscosity;
    tests.push_back(object);
  }
  return tests;
}

Json PositionJson(const TrayPosition& position, const InterruptedPosition* interrupted) {
  Json object = {{"position", position.position + 1},
                 {"action", position.label},
                 {"sampleId", position.sampleId},
                 {"tests", TestsJson(position)},
                 {"injectionTime", nullptr},
                 {"coolDownTime", nullptr},
                 {"estimatedSeconds", position.estimatedSeconds},
                 {"measuredTests", interrupted == nullptr ? 0 : interrupted->stored}};
  if (position.tests && position.tests->injectionTime) {
    object["injectionTime"] = *position.tests->injectionTime;
  }
  if (position.tests && position.tests->coolDownTime) {
    object["coolDownTime"] = *position.tests->coolDownTime;
  }
  return object;
}

std::string Temperatures(const TrayPosition& position) {
  std::string text;
  if (!position.tests) return text;
  for (const rvx::SampleTest& test : position.tests->tests) {
    text += (text.empty() ? "" : " ") + FixedNumber(test.temperature, 1);
  }
  return text;
}

int ShowTray(Session& session) {
  const FoundInstrument& found = session.OneInstrument();
  const auto interrupted = session.host().journal().InterruptedOf(found.identity.archiveKey);
  Json positions = Json::array();
  Table table({{"position", Table::Align::Right},
               {"action"},
               {"sample id"},
               {"temperatures (degC)"},
               {"time (h:mm:ss)", Table::Align::Right},
               {"measured", Table::Align::Right}});
  for (const TrayPosition& position : ReadTray(found)) {
    const InterruptedPosition* done = FindInterrupted(interrupted, position.position);
    positions.push_back(PositionJson(position, done));
    table.AddRow({std::to_string(position.position + 1), position.label, position.sampleId,
                  Temperatures(position), DurationText(position.estimatedSeconds),
                  done == nullptr ? "" : fmt::format("{} of {}", done->stored, done->tests)});
  }
  if (interrupted) {
    session.output().Notice(DescribeInterrupted(*interrupted) +
                            "\"torvell run\" runs what is left, \"torvell tray clear\" drops it.");
  }
  session.output().Result(
      {{"instrument", found.identity.portName},
       {"size", TraySize(found)},
       {"positions", positions},
       {"interruptedSince", interrupted ? Json(TimeText(interrupted->started)) : Json(nullptr)}},
      table.Text());
  return static_cast<int>(ExitCode::Good);
}

int LoadTray(Session& session, const std::string& path) {
  session.RequireLevel(kLevelOperator, "load a tray");
  const FoundInstrument& found = session.OneInstrument();
  ReplaceTray(session.host(), found, BuildTray(found, path));
  CloseInterrupted(session.host(), found);
  return ShowTray(session);
}

int ClearTray(Session& session) {
  session.RequireLevel(kLevelOperator, "clear the tray");
  const FoundInstrument& found = session.OneInstrument();
  ReplaceTray(session.host(), found, EmptyTray(found));
  CloseInterrupted(session.host(), found);
  return ShowTray(session);
}

int ExportTray(Session& session) {
  if (session.output().json()) return ShowTray(session);
  const FoundInstrument& found = session.OneInstrument();
  session.output().Text(FormatTrayFile(TrayFileOf(ReadTray(found))));
  return static_cast<int>(ExitCode::Good);
}

}  // namespace

void AddTrayCommands(const Command& program) {
  const Command tray = program.AddGroup("tray", "the tray");
  tray.AddCommand("show", "list the filled positions", ShowTray);
  tray.AddCommand("clear", "empty all positions (level 10)", ClearTray);
  tray.AddCommand("export", "print the tray as a file that load takes", ExportTray);

  const auto path = std::make_shared<std::string>();
  tray.AddCommand("load", "fill the tray from a file (level 10)", LoadTray, path)
      .Add("FILE", *path, "CSV; - for standard input")
      .Required();
}

}  // namespace torvell
