#include "module/screens/samples/avail_chk_visc_data.h"

#include "boundary/standards_text.h"
#include "module/calibration/standards_map.h"
#include "module/execution/visc_action.h"
#include "module/instrument/c_rvx.h"
#include "module/toolkit/editlist/edit_table.h"
#include "module/toolkit/local_numbers.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr int kTemperatureColumn = 0;
constexpr int kViscosityColumn = 1;
constexpr int kRotorTimeColumn = 2;

}  // namespace

std::string CAvailChkViscData::GetListItem(int /*row*/, int column, int index) {
  const CStandardsMap* standards = action_.instrument().GetStandards();
  const int count = action_.instrument().configuration().GetSlotCount();
  if (column != kTemperatureColumn || index < 0 || index >= count || standards == nullptr) {
    throw new InvalidException;
  }
  const std::string temperature = kTemperatureTexts[index];
  const std::string sampleId = action_.GetSampleId();
  if (!standards->HasUsableRecord(sampleId)) return temperature;
  const bool usable = standards->FindUsableTemperature(sampleId, temperature) >= 0;
  return usable ? temperature : std::string();
}

std::string CAvailChkViscData::GetDefaultText(int row, int column) {
  const TestRecord tests = action_.CopyTestRecord();
  switch (column) {
    case kTemperatureColumn:
      return ToLocal(platform::FormatText("%.2f", tests.testTemperatures[0]));
    case kViscosityColumn:
      return GetDefaultViscosity(row);
    case kRotorTimeColumn:
      return platform::FormatText("%d", tests.rotorOnTimes[0]);
    default:
      throw new InvalidException;
  }
}

std::string CAvailChkViscData::GetDefaultViscosity(int row) {
  const std::string own = ToLocal(platform::FormatText("%.2f", action_.CopyKnownViscosities()[0]));
  const CStandardsMap* standards = action_.instrument().GetStandards();
  if (standards == nullptr || row < 0 || row >= table_.rowCount()) return own;
  try {
    const std::string sampleId = action_.GetSampleId();
    const int32_t record =
        standards->FindStandardTemperature(sampleId, table_.text(row, kTemperatureColumn));
    // The standard has no value at this temperature, and that of another one would be wrong.
    if (record < 0) return own;
    return ToLocal(standards->GetStandardViscosityText(sampleId, record));
  } catch (InvalidException* unknown) {
    delete unknown;
    return own;
  }
}

void CAvailChkViscData::GetDoubleRange(int /*row*/, int column, DoubleRange& range, int& decimals) {
  if (column != kViscosityColumn) throw new InvalidException;
  range.minimum = kMinKnownViscosity;
  range.maximum = kMaxKnownViscosity;
  decimals = 1;
}

void CAvailChkViscData::GetIntRange(int /*row*/, int column, IntRange& range) {
  if (column != kRotorTimeColumn) throw new InvalidException;
  range.minimum = kMinRotorOnTime;
  range.maximum = kMaxRotorOnTime;
}

}  // namespace rvx
