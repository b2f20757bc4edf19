#include "module/screens/calibration/cell_constants_rows.h"

#include "boundary/standards_text.h"
#include "platform/text.h"

namespace rvx {

std::vector<CellConstantsRow> ReadCellConstants(const ConfigurationRecord& configuration) {
  std::vector<CellConstantsRow> rows;
  const auto format = [](double constant) { return platform::FormatText("%.f", constant); };
  const ConfigurationGuard guard(configuration);
  const ConfigurationFields& fields = configuration.fields;
  const auto count = static_cast<size_t>(fields.GetSlotCount());
  for (size_t slot = 0; slot < count; ++slot) {
    rows.push_back({kTemperatureTexts[slot], format(fields.b0.at(slot)), format(fields.b1.at(slot)),
                    format(fields.b2.at(slot)), fields.calibrationDates.at(slot)});
  }
  return rows;
}

}  // namespace rvx
