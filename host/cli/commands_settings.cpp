// settings: what a person may set on an instrument, by key, and its whole settings text.
#include <fmt/format.h>

#include "host/cli/commands.h"
#include "host/cli/failure.h"
#include "host/cli/session.h"
#include "host/cli/table.h"
#include "host/core/users.h"
#include "host/tray/csv.h"

namespace torvell {

namespace {

int ShowSettings(Session& session) {
  Json list = Json::array();
  Table table({{"key"}, {"value"}, {"unit"}, {"accepts"}, {"level"}, {"description"}});
  for (const rvx::InstrumentSetting& setting : session.OneInstrument().scripting->GetSettings()) {
    const bool changeable = setting.level < rvx::kLevelUnreachable;
    list.push_back({{"key", setting.key},
                    {"value", setting.value},
                    {"unit", setting.unit},
                    {"accepts", setting.accepts},
                    {"level", changeable ? Json(setting.level) : Json(nullptr)},
                    {"description", setting.description}});
    table.AddRow({setting.key, setting.value, setting.unit, setting.accepts,
                  changeable ? std::to_string(setting.level) : "", setting.description});
  }
  session.output().Result(list, table.Text());
  return static_cast<int>(ExitCode::Good);
}

int SetSettings(Session& session, const std::vector<std::string>& assignments) {
  std::vector<std::pair<std::string, std::string>> values;
  for (const std::string& assignment : assignments) {
    const size_t equals = assignment.find('=');
    if (equals == std::string::npos || equals == 0) {
      throw CommandFailure(ExitCode::BadUse,
                           fmt::format("found \"{}\"; accepted: KEY=VALUE, with a key of "
                                       "\"torvell settings show\". Nothing was changed.",
                                       assignment));
    }
    values.emplace_back(assignment.substr(0, equals), assignment.substr(equals + 1));
  }
  session.RequireLevel(kLevelManager, "change settings");
  ThrowIfRefused(session.OneInstrument().scripting->SetSettings(values));
  return ShowSettings(session);
}

int ExportSettings(Session& session) {
  const std::string text = session.OneInstrument().instrument->SaveSettingsText();
  session.output().Result({{"settingsText", text}}, text);
  return static_cast<int>(ExitCode::Good);
}

int ImportSettings(Session& session, const std::string& path) {
  const std::string text = ReadWholeFile(path);
  session.RequireLevel(kLevelManager, "import settings");
  ThrowIfRefused(session.OneInstrument().scripting->ImportSettings(text));
  session.output().Progress(fmt::format("{}: settings taken over", path));
  return ShowSettings(session);
}

}  // namespace

void AddSettingsCommands(const Command& program) {
  const Command settings = program.AddGroup("settings", "the instrument's settings");
  settings.AddCommand("show", "list them with what each accepts", ShowSettings);

  const auto assignments = std::make_shared<std::vector<std::string>>();
  settings
      .AddCommand("set", "change settings, all or none (level 50; the temperature offset 100)",
                  SetSettings, assignments)
      .Add("KEY=VALUE", *assignments, "as injection-time=200")
      .Required();

  settings.AddCommand("export", "print the whole settings text", ExportSettings);

  const auto path = std::make_shared<std::string>();
  settings.AddCommand("import", "take a settings text over (level 50)", ImportSettings, path)
      .Add("FILE", *path, "what settings export has printed; - for standard input")
      .Required();
}

}  // namespace torvell
