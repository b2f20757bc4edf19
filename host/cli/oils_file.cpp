#include "host/cli/oils_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "boundary/simulated_oils_text.h"
#include "boundary/standards_text.h"
#include "host/tray/number_text.h"
#include "platform/text.h"

namespace torvell {

namespace {

constexpr int kMaxTrayPositions = 30;
constexpr double kColdest = -45.0, kWarmest = 25.0;                 // degrees C
constexpr double kMinViscosity = 100.0, kMaxViscosity = 1000000.0;  // mPa*s
enum Column { kPosition, kTemperature, kViscosity, kColumns };

const std::vector<std::string>& Heading() {
  static const std::vector<std::string> heading = {"position", "temperature", "true viscosity"};
  return heading;
}

bool IsViscosity(double value) { return value >= kMinViscosity && value <= kMaxViscosity; }

class OilsReader {
 public:
  OilsReader(const std::vector<StandardRow>& standards, std::vector<FileProblem>& problems)
      : standards_(standards), problems_(problems) {}

  void Read(const CsvRow& row) {
    line_ = row.line;
    const std::string position = platform::Trim(row.cells[kPosition]);
    const std::string temperature = platform::Trim(row.cells[kTemperature]);
    const std::string viscosity = platform::Trim(row.cells[kViscosity]);
    const std::optional<int> place = platform::ParseInt(position);
    if (!place || *place < 1 || *place > kMaxTrayPositions) {
      Add(kPosition, position, fmt::format("a whole number from 1 to {}", kMaxTrayPositions));
      return;
    }
    std::optional<double> degrees;
    if (!temperature.empty()) {
      degrees = platform::ParseDouble(temperature);
      if (!degrees || *degrees < kColdest || *degrees > kWarmest) {
        Add(kTemperature, temperature,
            fmt::format("a number from {:.0f} to {:.0f} degC", kColdest, kWarmest));
        return;
      }
    }
    // A standard may be called "5000": a name that the laboratory has stored comes first.
    const std::optional<double> value = platform::ParseDouble(viscosity);
    if (!value || IsStandard(viscosity)) {
      ReadStandard(*place, degrees, viscosity);
    } else if (!degrees) {
      Add(kTemperature, temperature, "a temperature in degC, since the viscosity is a number");
    } else if (!IsViscosity(*value)) {
      Add(kViscosity, viscosity,
          fmt::format("a number from {:.0f} to {:.0f} mPa*s", kMinViscosity, kMaxViscosity));
    } else {
      Take({*place, *degrees, *value});
    }
  }

  std::vector<OilRow> rows;

 private:
  void Add(Column column, const std::string& found, const std::string& accepted) {
    problems_.push_back({line_, column + 1, Heading()[column],
                         found.empty() ? "an empty cell" : "\"" + found + "\"", accepted});
  }

  bool IsStandard(const std::string& name) const {
    return std::any_of(standards_.begin(), standards_.end(),
                       [&](const StandardRow& standard) { return standard.name == name; });
  }

  void ReadStandard(int position, std::optional<double> degrees, const std::string& name) {
    bool found = false;
    for (const StandardRow& standard : standards_) {
      const auto temperature = platform::ParseDouble(platform::RemoveBlanks(standard.temperature));
      const auto viscosity = platform::ParseDouble(standard.viscosity);
      if (standard.name != name || !temperature || !viscosity || !IsViscosity(*viscosity)) continue;
      if (degrees && *degrees != *temperature) continue;
      found = true;
      Take({position, *temperature, *viscosity});
    }
    if (found) return;
    Add(kViscosity, name,
        degrees ? "a number in mPa*s, or a stored standard with a viscosity at that temperature"
                : "a stored standard (torvell standards list)");
  }

  void Take(const OilRow& row) {
    const bool isDouble = std::any_of(rows.begin(), rows.end(), [&](const OilRow& other) {
      return other.position == row.position && other.temperature == row.temperature;
    });
    if (isDouble) {
      Add(kTemperature, ExactNumber(row.temperature), "each temperature of a position once");
      return;
    }
    rows.push_back(row);
  }

  const std::vector<StandardRow>& standards_;
  std::vector<FileProblem>& problems_;
  int line_ = 0;
};

}  // namespace

std::vector<OilRow> ParseOilsFile(std::string_view text, const std::vector<StandardRow>& standards,
                                  std::vector<FileProblem>& problems) {
  std::vector<CsvRow> rows = ParseCsv(text, problems);
  CheckShape(rows, Heading(), problems);
  OilsReader reader(standards, problems);
  if (!problems.empty()) return {};
  for (const CsvRow& row : rows) reader.Read(row);
  return std::move(reader.rows);
}

std::vector<OilRow> ParseOilsText(std::string_view text) {
  std::vector<OilRow> rows;
  for (const std::string& line : platform::SplitFields(text, rvx::kStandardsRowEnd)) {
    const auto cells = platform::SplitFields(line, rvx::kStandardsCellEnd, kColumns);
    if (cells.size() < kColumns) continue;
    rows.push_back({platform::ParseLeadingInt(cells[kPosition]),
                    platform::ParseLeadingDouble(cells[kTemperature]),
                    platform::ParseLeadingDouble(cells[kViscosity])});
  }
  return rows;
}

std::string FormatOilsText(const std::vector<OilRow>& rows) {
  std::string text;
  for (const OilRow& row : rows) {
    text += fmt::format("{}{}{}{}{}{}{}", row.position, rvx::kStandardsCellEnd,
                        ExactNumber(row.temperature), rvx::kStandardsCellEnd,
                        ExactNumber(row.viscosity), rvx::kStandardsCellEnd, rvx::kStandardsRowEnd);
  }
  return text;
}

}  // namespace torvell
