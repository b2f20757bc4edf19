// The stored form of a sample action's parameters: one line of the tray in the settings text.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "module/instrument/test_record.h"

namespace rvx {

struct SampleActionState {
  std::string sampleId;
  int32_t configured = 0;
  std::array<double, kMaxTests> knownViscosities{};  // mPa*s
  TestRecord testRecord;
};

// Sample id, configured, 20 known viscosities, the test record's text; 0x0B after each. Characters
// in the sample id that would end a field or the line are written as blanks.
std::string WriteSampleActionState(const SampleActionState& state);

// Reads a text into `state`, which keeps the values that a short text does not contain. Returns
// false and changes nothing for three fields or fewer.
bool ReadSampleActionState(const std::string& text, SampleActionState& state);

}  // namespace rvx
