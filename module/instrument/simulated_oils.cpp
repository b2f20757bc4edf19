#include "module/instrument/simulated_oils.h"

#include <optional>
#include <string>
#include <vector>

#include "boundary/host.h"
#include "boundary/simulated_oils_text.h"
#include "boundary/standards_text.h"
#include "module/instrument/temperature_offset.h"
#include "module/protocol/conversions.h"
#include "module/protocol/identification.h"
#include "platform/mix.h"
#include "platform/text.h"
#include "platform/time_base.h"

namespace rvx {
namespace {

constexpr size_t kFields = 3;

double CelsiusOfNewInstrument(uint16_t counts) {
  static const char modelCode = ParseIdentification(kSimulatorIdentification).modelCode;
  return CountsToTemperature(counts, ProbeConstants{}, SupplyPair{}, modelCode,
                             kUsualTemperatureOffset);
}

// The noise differs at each start, but is the same under a virtual clock, which starts at a fixed
// date.
uint64_t MakeSeed(const std::string& text) {
  uint64_t seed = static_cast<uint64_t>(platform::LocalNow().ToMilliseconds());
  for (const char c : text) seed = platform::detail::Mix64(seed ^ static_cast<unsigned char>(c));
  return seed;
}

}  // namespace

std::map<int, simulator::OilCurve> ParseSimulatedOils(std::string_view text) {
  std::map<int, simulator::OilCurve> oils;
  for (const std::string& row : platform::SplitFields(text, kStandardsRowEnd)) {
    const std::vector<std::string> cells = platform::SplitFields(row, kStandardsCellEnd, kFields);
    if (cells.size() < kFields) continue;
    const std::optional<int> position = platform::ParseInt(cells[0]);
    const std::optional<double> temperature = platform::ParseDouble(cells[1]);
    const std::optional<double> viscosity = platform::ParseDouble(cells[2]);
    if (!position || *position < 1 || !temperature || !viscosity || !(*viscosity > 0.0)) continue;
    oils[*position][*temperature] = *viscosity;
  }
  return oils;
}

std::unique_ptr<simulator::RotorModel> MakeStoredRotor() {
  std::string text;
  try {
    GetAnalysisArchive()->ReadAnalysisText(kSimulatedOilsArchiveName, kSimulatedOilsSection, text);
  } catch (ArchiveException* refused) {
    delete refused;  // the host has told its user
    return nullptr;
  }
  std::map<int, simulator::OilCurve> oils = ParseSimulatedOils(text);
  if (oils.empty()) return nullptr;
  return std::make_unique<simulator::OilRotor>(std::move(oils), CelsiusOfNewInstrument,
                                               MakeSeed(text));
}

}  // namespace rvx
