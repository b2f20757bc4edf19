// The stored text of the calibration standards.
#include <algorithm>

#include "boundary/exceptions.h"
#include "boundary/standards_text.h"
#include "fuzz/require.h"
#include "module/calibration/standards_map.h"

namespace {

void LookAt(const rvx::CStandardsMap& map, const std::string& name) {
  bool usable = false;
  for (const char* temperature : rvx::kTemperatureTexts) {
    const int32_t index = map.FindUsableTemperature(name, temperature);
    if (index < 0) continue;
    usable = true;
    map.GetStandardViscosity(name, index);
    map.GetStandardLot(name, index);
  }
  fuzz::Require(map.HasUsableRecord(name) == usable, "a standard is usable at some temperature");
  map.GetStandardTemperature(name, rvx::kLastRecord);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  rvx::CStandardsMap first(true);
  first.LoadFromText(fuzz::ToText(data, size));
  const std::string written = first.ToText();

  // A row end inside a name is written as a blank, by which two names may become one. That can
  // happen once, in a text that no program has written.
  const std::vector<std::string> names = first.GetStandardNames();
  const bool isOdd = std::any_of(names.begin(), names.end(), [](const std::string& name) {
    return name.find(rvx::kStandardsRowEnd) != std::string::npos;
  });
  rvx::CStandardsMap second(true);
  second.LoadFromText(written);
  fuzz::Require(isOdd || second.ToText() == written, "what is read is what was written");
  rvx::CStandardsMap third(true);
  third.LoadFromText(second.ToText());
  fuzz::Require(third.ToText() == second.ToText(), "a text that was written once stays as it is");

  for (const std::string& name : second.GetStandardNames()) LookAt(second, name);
  // After every record that can be named is removed, nothing is left.
  for (const std::string& name : second.GetStandardNames()) {
    int32_t left = 1;
    while (left > 0)
      left = second.RemoveStandardRecord(name, second.GetStandardTemperature(name, 0));
    fuzz::Require(left == 0, "a record that is there can be removed");
  }
  fuzz::Require(second.ToText().empty(), "what is removed is gone");
  return 0;
}
