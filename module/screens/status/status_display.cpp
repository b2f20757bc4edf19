#include "module/screens/status/status_display.h"

#include <algorithm>

#include "module/instrument/test_record.h"
#include "module/resources/string_ids.h"
#include "module/resources/string_table.h"
#include "platform/text.h"

namespace rvx {

StatusWindowTexts StatusWindowTexts::Load() {
  return {LoadResourceString(kTextOff), LoadResourceString(kTextElapsedTime),
          LoadResourceString(kTextTimeRemaining)};
}

StatusDisplay MakeStatusDisplay(const StatusReadings& readings, const StatusWindowTexts& texts,
                                platform::Microseconds now) {
  StatusDisplay display;
  if (!readings.received) {
    display.temperature = display.target = display.speed = display.seconds = "-";
    display.timerHeading = texts.elapsedTime;
    display.machineStatus = "-";
    display.age = "No reply from the instrument yet";
    return display;
  }
  display.temperature = platform::FormatText("%6.2f", readings.temperature);
  display.target = readings.targetTemperature == kTemperatureOff
                       ? texts.off
                       : platform::FormatText("%6.2f", readings.targetTemperature);
  display.speed = platform::FormatText("%.4f", readings.speed);
  display.seconds = platform::FormatText("%d", readings.seconds);
  display.timerHeading = readings.countsDown ? texts.timeRemaining : texts.elapsedTime;
  display.machineStatus = readings.machineStatusText;
  std::replace(display.machineStatus.begin(), display.machineStatus.end(), ',', '\n');
  const auto age = std::chrono::duration_cast<std::chrono::seconds>(now - readings.time);
  if (now - readings.time > kStaleAfter) {
    display.age = platform::FormatText("No reply for %lld s", static_cast<long long>(age.count()));
  }
  return display;
}

}  // namespace rvx
