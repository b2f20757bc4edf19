#include "module/screens/samples/sample_tests_model.h"

#include <algorithm>

#include "boundary/access_levels.h"
#include "boundary/host.h"
#include "module/execution/visc_action.h"
#include "module/resources/string_ids.h"
#include "module/resources/string_table.h"
#include "module/toolkit/local_numbers.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr size_t kTemperatureColumn = 0;
constexpr size_t kViscosityColumn = 1;

bool IsManager() { return GetSecurityManager()->GetAccessLevel() >= kLevelManager; }

double ReadCell(const std::string& text) {
  return platform::ParseLeadingDouble(FromLocal(platform::RemoveBlanks(text)));
}

}  // namespace

SampleTestsModel::SampleTestsModel(C_RVXViscAction& action, bool withKnownViscosity)
    : action_(action), withKnownViscosity_(withKnownViscosity), mayChangeTimes_(IsManager()) {}

std::vector<SampleTestsModel::Column> SampleTestsModel::GetColumns() const {
  std::vector<Column> columns = {{tagCICELTYPE::List, LoadResourceString(kTextTemperatureHeading)}};
  if (withKnownViscosity_) {
    columns.push_back({tagCICELTYPE::Decimal, LoadResourceString(kTextKnownViscosityHeading)});
  }
  columns.push_back({mayChangeTimes_ ? tagCICELTYPE::Whole : tagCICELTYPE::ReadOnly,
                     LoadResourceString(kTextRotorOnTimeHeading)});
  return columns;
}

std::vector<std::vector<std::string>> SampleTestsModel::GetRows() const {
  const TestRecord tests = action_.CopyTestRecord();
  const auto viscosities = action_.CopyKnownViscosities();
  const TestRecord defaults;
  std::vector<std::vector<std::string>> rows;
  for (size_t i = 0; i < static_cast<size_t>(std::clamp(tests.testCount, 0, kMaxTests)); ++i) {
    const double temperature = tests.testTemperatures.at(i) == kTemperatureOff
                                   ? defaults.testTemperatures[0]
                                   : tests.testTemperatures.at(i);
    const int32_t rotorTime =
        tests.rotorOnTimes.at(i) == 0 ? defaults.rotorOnTimes[0] : tests.rotorOnTimes.at(i);
    std::vector<std::string> row = {ToLocal(platform::FormatText("%.2f", temperature))};
    if (withKnownViscosity_) {
      row.push_back(ToLocal(platform::FormatText("%.2f", viscosities.at(i))));
    }
    row.push_back(platform::FormatText("%d", rotorTime));
    rows.push_back(std::move(row));
  }
  return rows;
}

int32_t SampleTestsModel::GetInjectionTime() const {
  return action_.CopyTestRecord().injectionTime;
}

int32_t SampleTestsModel::GetCoolDownTime() const { return action_.CopyTestRecord().coolDownTime; }

SampleTestsModel::Outcome SampleTestsModel::Check(const Entries& entries) const {
  if (entries.rows.empty()) return {Refusal::NoTest};
  // A row that was inserted and never filled would be read as a test at 0 degrees.
  for (size_t row = 0; row < entries.rows.size(); ++row) {
    const auto& cells = entries.rows[row];
    const auto empty = std::find_if(cells.begin(), cells.end(), [](const std::string& cell) {
      return platform::Trim(cell).empty();
    });
    if (empty != cells.end()) {
      return {Refusal::EmptyCell, static_cast<int>(row), static_cast<int>(empty - cells.begin())};
    }
  }
  if (!entries.hasInjectionTime) return {Refusal::NoInjectionTime};
  if (!entries.hasCoolDownTime) return {Refusal::NoCoolDownTime};
  if (!IsManager() && ChangesTimes(entries)) return {Refusal::NotAllowed};
  return {};
}

// The user's level may have dropped while the dialog was open.
bool SampleTestsModel::ChangesTimes(const Entries& entries) const {
  if (entries.injectionTime != GetInjectionTime() || entries.coolDownTime != GetCoolDownTime()) {
    return true;
  }
  // The times that the rows and a new row had when the dialog opened.
  std::vector<std::string> known = {
      platform::FormatText("%d", action_.CopyTestRecord().rotorOnTimes[0])};
  for (const auto& row : GetRows()) known.push_back(row.at(RotorTimeColumn()));
  return std::any_of(entries.rows.begin(), entries.rows.end(), [&](const auto& row) {
    return std::find(known.begin(), known.end(), row.at(RotorTimeColumn())) == known.end();
  });
}

SampleTestsModel::Outcome SampleTestsModel::Accept(const Entries& entries) {
  const Outcome outcome = Check(entries);
  if (outcome.refusal != Refusal::None) return outcome;
  TestRecord tests = action_.CopyTestRecord();
  std::array<double, kMaxTests> viscosities{};
  tests.testTemperatures.fill(kTemperatureOff);
  tests.rotorOnTimes.fill(0);
  const size_t count = std::min<size_t>(entries.rows.size(), kMaxTests);
  for (size_t i = 0; i < count; ++i) {
    const std::vector<std::string>& row = entries.rows[i];
    tests.testTemperatures.at(i) = ReadCell(row.at(kTemperatureColumn));
    if (withKnownViscosity_) viscosities.at(i) = ReadCell(row.at(kViscosityColumn));
    tests.rotorOnTimes.at(i) = platform::ParseLeadingInt(row.at(RotorTimeColumn()));
  }
  tests.testCount = static_cast<int32_t>(count);
  tests.injectionTime = entries.injectionTime;
  tests.coolDownTime = entries.coolDownTime;
  if (!action_.AssignTests(tests, viscosities)) return {Refusal::Started};
  return {};
}

}  // namespace rvx
