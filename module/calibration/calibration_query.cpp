#include "module/calibration/calibration_query.h"

#include "boundary/exceptions.h"
#include "module/calibration/calibration_temperatures.h"
#include "platform/text.h"

namespace rvx {
namespace {

// A run belongs to a temperature if its average differs by less than this. The last digit includes
// an average that differs by exactly 0.05 degrees C, whatever its binary form is.
constexpr double kReach = 0.051;  // degrees C
constexpr double kHoursOfDay = 24.0;

}  // namespace

std::string BuildCalibrationQuery(const std::string& instrumentId,
                                  std::optional<int> temperatureIndex, bool lowTemperatureOption,
                                  int hours, const platform::Date& now) {
  int warmest = 0;
  int coldest = CalibrationSlotCount(lowTemperatureOption) - 1;
  if (temperatureIndex) {
    if (*temperatureIndex < 0 || *temperatureIndex >= kCalibrationSlots) throw new InvalidException;
    warmest = coldest = *temperatureIndex;
  }
  const double low = kCalibrationTemperatures[static_cast<size_t>(coldest)] - kReach;
  const double high = kCalibrationTemperatures[static_cast<size_t>(warmest)] + kReach;
  const platform::Date cutOff = now.PlusDays(-(hours / kHoursOfDay));
  return "SELECT * FROM SAMPLES WHERE ([Known Viscosity] = -2) AND ([Instrument] Like '" +
         platform::Trim(instrumentId) + "') AND ([Constant 5] <> 0) AND ([Valid] <> 0) " +
         platform::FormatText("AND ([Average Temperature] > %.3f) ", low) +
         platform::FormatText("AND ([Average Temperature] < %.3f) ", high) +
         "AND ([Timestamp] > #" + platform::FormatQueryDate(cutOff) +
         "#) ORDER BY SAMPLES.Timestamp;";
}

}  // namespace rvx
