#include "module/execution/visc_state_text.h"

#include <algorithm>
#include <vector>

#include "platform/text.h"

namespace rvx {
namespace {

constexpr char kFieldEnd = '\x0B';
constexpr size_t kFirstViscosity = 2;
constexpr size_t kTestRecordField = kFirstViscosity + kMaxTests;
constexpr size_t kFields = kTestRecordField + 1;
constexpr size_t kMinFields = 4;

// Zero bytes too: a host may store the text as one that ends at the first zero byte.
std::string WithoutEnds(std::string text) {
  const auto ends = [](char c) { return c == kFieldEnd || c == '\n' || c == '\r' || c == '\0'; };
  std::replace_if(text.begin(), text.end(), ends, ' ');
  return text;
}

}  // namespace

std::string WriteSampleActionState(const SampleActionState& state) {
  std::string text = WithoutEnds(state.sampleId) + kFieldEnd;
  text += platform::FormatText("%d", state.configured) + kFieldEnd;
  for (const double viscosity : state.knownViscosities) {
    text += platform::FormatText("%.15f", viscosity) + kFieldEnd;
  }
  return text + state.testRecord.ToText() + kFieldEnd;
}

bool ReadSampleActionState(const std::string& text, SampleActionState& state) {
  const std::vector<std::string> fields = platform::SplitFields(text, kFieldEnd, kFields);
  if (fields.size() < kMinFields) return false;
  state.sampleId = fields[0];
  state.configured = platform::ParseLeadingInt(fields[1]);
  const size_t viscosities = std::min(fields.size(), kTestRecordField);
  for (size_t i = kFirstViscosity; i < viscosities; ++i) {
    state.knownViscosities.at(i - kFirstViscosity) = platform::ParseLeadingDouble(fields[i]);
  }
  if (fields.size() > kTestRecordField) state.testRecord.FromText(fields[kTestRecordField]);
  return true;
}

}  // namespace rvx
