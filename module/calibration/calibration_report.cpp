#include "module/calibration/calibration_report.h"

#include <algorithm>

#include "boundary/exceptions.h"
#include "module/calibration/calibration_temperatures.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr int32_t kFirstPageBlock = 28;

// A font may report a height of 0, by which nothing can be divided.
int32_t AtLeastOne(int32_t value) { return std::max(value, int32_t{1}); }

}  // namespace

std::string CalibrationTargetText(std::optional<int> temperatureIndex) {
  if (!temperatureIndex) return "All Temperatures";
  if (*temperatureIndex < 0 || *temperatureIndex >= kCalibrationSlots) throw new InvalidException;
  return platform::FormatText("%.f",
                              kCalibrationTemperatures[static_cast<size_t>(*temperatureIndex)]);
}

std::string ReportModelText(char modelCode) {
  switch (modelCode) {
    case '1':
      return "RVX-A Mark 2";
    case '2':
      return "RVX-B Mark 2";
    case '3':
      return "RVX-C TX";
    case '4':
      return "RVX-D TX";
    default:
      return {};
  }
}

ProbeTexts FormatProbeConstants(double a0, double a1, double a2) {
  return {platform::FormatText("%.6f", a0), platform::FormatText("%.6f", a1),
          platform::FormatText("%.9f", a2)};
}

int32_t ReportLinesOfPage(int32_t pageHeight, int32_t topOffset, int32_t lineStep) {
  const int32_t step = AtLeastOne(lineStep);
  return (pageHeight - 2 * (topOffset + 2 * step)) / step;
}

bool IsReportPageFull(int32_t y, int32_t lineStep, int32_t linesOfPage) {
  return -y / AtLeastOne(lineStep) > linesOfPage;
}

int32_t ReportPageCount(int32_t rows, int32_t linesOfPage) {
  const int32_t lines = AtLeastOne(linesOfPage);
  return AtLeastOne((rows + kFirstPageBlock + lines) / lines);
}

std::string ReportPageText(int32_t page, int32_t pages) {
  return platform::FormatText("Page %d of %d", page, pages);
}

}  // namespace rvx
