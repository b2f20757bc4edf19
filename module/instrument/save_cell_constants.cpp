#include "module/instrument/save_cell_constants.h"

#include "boundary/host.h"
#include "module/instrument/access_check.h"
#include "module/instrument/c_rvx.h"

namespace rvx {

std::optional<std::string> FindSaveRefusal(std::optional<int> temperatureIndex) {
  if (temperatureIndex) return FindLevelRefusal(kLevelOperator, "Saving a calibration");
  return FindLevelRefusal(kLevelService, "Saving a calibration for all temperatures");
}

SavedConstants SaveCellConstants(C_RVX& instrument, std::optional<int> temperatureIndex,
                                 int dateIndex, const CalibrationTexts& texts,
                                 const platform::Date& now) {
  const int first = temperatureIndex.value_or(0);
  if (first < 0 || first >= kCalibrationSlots || dateIndex < 0 || dateIndex >= kCalibrationSlots) {
    throw new InvalidException;
  }
  SavedConstants saved;
  if (const std::optional<std::string> refusal = FindSaveRefusal(temperatureIndex)) {
    saved.refusal = *refusal;
    return saved;
  }
  saved.values = ConstantsOf(texts);
  const bool cleared = saved.values.b0 == 0.0 && saved.values.b1 == 0.0 && saved.values.b2 == 0.0;
  saved.date = cleared ? NeverCalibrated() : now;
  const auto dateSlot = static_cast<size_t>(dateIndex);
  ConfigurationRecord& record = instrument.configuration();
  platform::Date oldDate;
  {
    ConfigurationGuard guard(record);
    const int end = temperatureIndex ? first + 1 : record.GetSlotCount();
    ConfigurationFields& fields = record.fields;
    oldDate = fields.calibrationDates[dateSlot];
    for (size_t slot = static_cast<size_t>(first); slot < static_cast<size_t>(end); ++slot) {
      fields.b0[slot] = saved.values.b0;
      fields.b1[slot] = saved.values.b1;
      fields.b2[slot] = saved.values.b2;
      fields.calibrationDates[slot] = saved.date;
    }
  }
  try {
    GetInstrumentArchive()->StoreInstrument(instrument.GetArchiveKey(), &instrument);
    GetInstrumentManager()->NotifyInstrumentChanged();
    saved.stored = true;
  } catch (ArchiveException* refused) {
    saved.reason = refused->GetRecord().message;
    delete refused;
    ConfigurationGuard guard(record);
    record.fields.calibrationDates[dateSlot] = oldDate;
    saved.date = oldDate;
  }
  return saved;
}

}  // namespace rvx
