// The stored form of a sample action's parameters: one line, which a tray's settings text holds.
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

// Sample id, configured, 20 known viscosities, the test record's text; 0x0B behind each. Characters
// in the sample id that would end a field or the line are written as blanks.
std::string WriteSampleActionState(const SampleActionState& state);

// Reads a text into `state`, which keeps what a short text does not say: false, and nothing is
// changed, for three fields or fewer.
bool ReadSampleActionState(const std::string& text, SampleActionState& state);

}  // namespace rvx
