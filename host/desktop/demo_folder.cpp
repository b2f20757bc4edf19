#include "host/desktop/demo_folder.h"

#include <fmt/format.h>

#include <filesystem>

#include "boundary/standards_text.h"
#include "host/tray/csv.h"

namespace torvell {
namespace {

constexpr char kMark[] = "/demonstration.txt";

// Made-up constants of a cell: viscosity = B0 / speed + B1 + B2 * speed.
struct DemoConstants {
  double temperature, b0, b1, b2;
};
constexpr DemoConstants kConstants[] = {
    {-15, 1050, -380, 0}, {-20, 1100, -400, 0}, {-25, 1150, -420, 0}, {-30, 1200, -450, 0}};

struct DemoStandard {
  const char *name, *temperature, *viscosity, *lot;
};
constexpr DemoStandard kStandards[] = {{"CRM-20", "-20", "3950", "26A"},
                                       {"CRM-20", "-25", "7030", "26A"},
                                       {"CRM-25", "-25", "5400", "26B"},
                                       {"CRM-25", "-30", "10800", "26B"}};

std::string StandardsText() {
  std::string text;
  for (const DemoStandard& standard : kStandards) {
    for (const char* cell :
         {standard.name, standard.temperature, standard.viscosity, standard.lot}) {
      text += cell;
      text += rvx::kStandardsCellEnd;
    }
    text += rvx::kStandardsRowEnd;
  }
  return text;
}

}  // namespace

const std::vector<DemoUser>& DemoUsers() {
  static const std::vector<DemoUser> users = {
      {"olga", "olga", kLevelOperator, "fill and run trays, and use the service screens"},
      {"martin", "martin", kLevelManager,
       "also change settings, cell constants, standards and ports"},
      {"sara", "sara", kLevelService,
       "also manage users, open the setup and calibrate for all temperatures"}};
  return users;
}

std::string DefaultDemoFolder() { return DefaultDataFolder() + "-demo"; }

bool IsDemoFolder(const std::string& folder) {
  std::error_code error;
  return std::filesystem::exists(folder + kMark, error);
}

void WriteDemoStandards(Host& host) {
  if (!host.users().IsEmpty()) return;
  host.analysisTexts().WriteAnalysisText(rvx::kStandardsArchiveName, rvx::kStandardsSection,
                                         StandardsText());
}

void FillDemoFolder(Host& host) {
  if (!host.users().IsEmpty()) return;
  for (const InstrumentEntry& entry : host.instruments().Entries()) {
    if (entry.scripting == nullptr || !entry.identity.simulated) continue;
    for (const DemoConstants& each : kConstants) {
      const auto refused =
          entry.scripting->SetCellConstants(each.temperature, each.b0, each.b1, each.b2);
      if (refused) throw HostError(HostErrorKind::Database, refused->Sentences());
    }
  }
  // The first user must be one who may add the others; once there is a user, levels are enforced.
  const std::vector<DemoUser>& users = DemoUsers();
  for (auto user = users.rbegin(); user != users.rend(); ++user) {
    host.users().Add(user->name, user->level, user->password);
    host.users().SetActingUser(users.back().name);
  }
  host.users().SetActingUser("");
  WriteWholeFile(host.dataFolder() + kMark,
                 "This data folder holds a demonstration: simulated instrument, made-up constants "
                 "and users whose passwords are their names.\n");
}

}  // namespace torvell
