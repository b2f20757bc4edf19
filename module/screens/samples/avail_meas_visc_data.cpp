#include "module/screens/samples/avail_meas_visc_data.h"

#include "boundary/standards_text.h"
#include "module/execution/visc_action.h"
#include "module/instrument/c_rvx.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr int kTemperatureColumn = 0;
constexpr int kRotorTimeColumn = 1;

}  // namespace

CAvailMeasViscData::CAvailMeasViscData(C_RVXViscAction& action) : action_(action) {
  const ConfigurationRecord& configuration = action.instrument().configuration();
  const ConfigurationGuard guard(configuration);
  for (size_t slot = 0; slot < static_cast<size_t>(configuration.GetSlotCount()); ++slot) {
    if (configuration.HasCellConstants(kCalibrationTemperatures.at(slot))) {
      temperatures_.emplace_back(kTemperatureTexts[slot]);
    }
  }
}

std::string CAvailMeasViscData::GetListItem(int /*row*/, int column, int index) {
  if (column != kTemperatureColumn || index < 0 ||
      index >= static_cast<int>(temperatures_.size())) {
    throw new InvalidException;
  }
  return temperatures_[static_cast<size_t>(index)];
}

std::string CAvailMeasViscData::GetDefaultText(int /*row*/, int column) {
  if (temperatures_.empty()) throw new InvalidException;
  if (column == kTemperatureColumn) return temperatures_.front();
  if (column != kRotorTimeColumn) throw new InvalidException;
  return platform::FormatText("%d", action_.CopyTestRecord().rotorOnTimes[0]);
}

void CAvailMeasViscData::GetDoubleRange(int /*row*/, int /*column*/, DoubleRange& /*range*/,
                                        int& /*decimals*/) {
  throw new InvalidException;
}

void CAvailMeasViscData::GetIntRange(int /*row*/, int column, IntRange& range) {
  if (column != kRotorTimeColumn) throw new InvalidException;
  range.minimum = kMinRotorOnTime;
  range.maximum = kMaxRotorOnTime;
}

}  // namespace rvx
