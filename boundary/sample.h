// One stored run, a row of the sample archive's table SAMPLES.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/date.h"
#include "platform/guid.h"
#include "platform/time_base.h"

namespace rvx {

inline constexpr int kSampleConstants = 40;

struct Sample {
  platform::Guid id = platform::CreateGuid();
  std::string sampleId;
  platform::Date timestamp = platform::LocalNow();  // local time
  std::string operatorName;
  std::string typeName;
  std::string instrument;  // the instrument's id
  std::string probeId;
  uint16_t tray = 1;      // from 1
  uint16_t position = 1;  // from 1
  int32_t kind = 1;
  double knownViscosity = 0.0;         // -2.0 marks every run of this module
  double speed = 0.0;                  // rpm/1000
  double averageTemperature = -273.0;  // degrees C
  double reserved1 = 0.0;
  double reserved2 = 0.0;
  double viscosity = 0.0;  // mPa*s
  uint16_t valid = 1;
  // `Constant 1` to `Constant 40` at 0 to 39.
  std::array<double, kSampleConstants> constants{};
  platform::Date secondDate{1938, 1, 1};
  platform::Guid idCopy = id;
  std::string serialNumber;
  std::string lastText;
};

using ArrayOfSamples = std::vector<Sample>;

}  // namespace rvx
