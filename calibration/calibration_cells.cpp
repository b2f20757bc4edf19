#include "calibration/calibration_cells.h"

#include <algorithm>

#include "instrument/host/sample_constants.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr size_t kReportIdLength = 21;
constexpr int32_t kFirstPageBlock = 28;

CalibrationListCells FormatCells(const Sample& sample, const CellConstantValues* constants) {
  CalibrationListCells cells;
  cells.sampleId = sample.sampleId;
  cells.variation = platform::FormatText("%.2f", SpeedVariationPercent(sample));
  const double known = sample.constants[kConstantKnownViscosity];
  cells.knownViscosity = platform::FormatText("%.f", known);
  cells.viscosity = platform::FormatText("%.f", sample.viscosity);
  if (constants == nullptr) return cells;
  const double recalculated =
      RecalculateViscosity(constants->b0, constants->b1, constants->b2, sample.speed);
  cells.recalculated = platform::FormatText("%.f", recalculated);
  cells.percentDiff = platform::FormatText("%+.2f", PercentDiff(recalculated, known));
  return cells;
}

// The first characters (code points) of a UTF-8 text.
std::string FirstCharacters(const std::string& text, size_t count) {
  const auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
  size_t end = 0;
  for (; end < text.size(); ++end) {
    if (begins(text[end]) && count-- == 0) break;
  }
  return text.substr(0, end);
}

}  // namespace

CalibrationListCells FormatListCells(const Sample& sample, const CellConstantValues* constants) {
  CalibrationListCells cells = FormatCells(sample, constants);
  cells.speed = platform::FormatText("%.4f", sample.speed);
  cells.temperature = platform::FormatText("%.3f", sample.averageTemperature);
  return cells;
}

CalibrationListCells FormatReportCells(const Sample& sample, const CellConstantValues& constants) {
  CalibrationListCells cells = FormatCells(sample, &constants);
  cells.sampleId = FirstCharacters(sample.sampleId, kReportIdLength);
  cells.speed = platform::FormatText("%#.3f", sample.speed);
  cells.temperature = platform::FormatText("%.2f", sample.averageTemperature);
  return cells;
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

int32_t ReportPageCount(int32_t rows, int32_t linesOfPage) {
  const int32_t lines = std::max(linesOfPage, int32_t{1});
  return std::max((rows + kFirstPageBlock + lines) / lines, int32_t{1});
}

}  // namespace rvx
