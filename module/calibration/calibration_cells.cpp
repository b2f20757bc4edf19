#include "module/calibration/calibration_cells.h"

#include "boundary/sample_constants.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr size_t kReportIdLength = 21;

std::string MomentText(const platform::Date& moment,
                       const std::function<std::string(const platform::Date&)>& write) {
  switch (moment.state()) {
    case platform::Date::State::Null:
      return {};
    case platform::Date::State::Invalid:
      break;
    case platform::Date::State::Valid:
      return write(moment);
  }
  return "Invalid DateTime";
}

CalibrationListCells FormatCells(const Sample& sample, const CellConstantValues* constants,
                                 const MomentFormat& moment) {
  CalibrationListCells cells;
  cells.sampleId = sample.sampleId;
  cells.time = MomentText(sample.timestamp, moment.time);
  cells.date = MomentText(sample.timestamp, moment.date);
  if (sample.serialNumber == kSimulatorSerialNumber) cells.origin = "simulated";
  const double variation = SpeedVariationPercent(sample);
  cells.variation = TextOrNan(variation, platform::FormatText("%.2f", variation));
  const double known = sample.constants[kConstantKnownViscosity];
  cells.knownViscosity = TextOrNan(known, platform::FormatText("%.f", known));
  cells.viscosity = TextOrNan(sample.viscosity, platform::FormatText("%.f", sample.viscosity));
  if (constants == nullptr) return cells;
  const double recalculated =
      RecalculateViscosity(constants->b0, constants->b1, constants->b2, sample.speed);
  cells.recalculated = TextOrNan(recalculated, platform::FormatText("%.f", recalculated));
  const double difference = PercentDiff(recalculated, known);
  cells.percentDiff = TextOrNan(difference, platform::FormatText("%+.2f", difference));
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

MomentFormat IsoMomentFormat() {
  constexpr size_t kDateLength = 10;  // then a T, then the time
  return {[](const platform::Date& date) {
            return platform::FormatIsoDate(date).substr(kDateLength + 1);
          },
          [](const platform::Date& date) {
            return platform::FormatIsoDate(date).substr(0, kDateLength);
          }};
}

CalibrationListCells FormatListCells(const Sample& sample, const CellConstantValues* constants,
                                     const MomentFormat& moment) {
  CalibrationListCells cells = FormatCells(sample, constants, moment);
  cells.speed = TextOrNan(sample.speed, platform::FormatText("%.4f", sample.speed));
  const double temperature = sample.averageTemperature;
  cells.temperature = TextOrNan(temperature, platform::FormatText("%.3f", temperature));
  return cells;
}

CalibrationListCells FormatReportCells(const Sample& sample, const CellConstantValues& constants,
                                       const MomentFormat& moment) {
  CalibrationListCells cells = FormatCells(sample, &constants, moment);
  cells.sampleId = FirstCharacters(sample.sampleId, kReportIdLength);
  cells.speed = TextOrNan(sample.speed, platform::FormatText("%#.3f", sample.speed));
  const double temperature = sample.averageTemperature;
  cells.temperature = TextOrNan(temperature, platform::FormatText("%.2f", temperature));
  return cells;
}

}  // namespace rvx
