// The stored text of an instrument's configuration. The first byte of the input chooses which parts
// of the text are used.
#include <algorithm>

#include "fuzz/require.h"
#include "module/instrument/configuration_record.h"
#include "tests/support/fake_host.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const rvx::FakeHost host;
  const int32_t flags = data[0] & rvx::kLoadAll;
  const std::string text = fuzz::ToText(data + 1, size - 1);

  rvx::ConfigurationFields record;
  record.optionByte = data[0] & 0x10 ? 2 : 0;
  const std::string before = record.ToText();
  if (!record.FromText(text, flags)) {
    fuzz::Require(record.ToText() == before, "a refused text changes nothing");
    return 0;
  }
  const std::string written = record.ToText();
  fuzz::Require(std::count(written.begin(), written.end(), '\x0B') == 52, "52 fields are written");
  fuzz::Require(written.find('\n') == std::string::npos, "the text is one line");
  rvx::ConfigurationFields second;
  fuzz::Require(second.FromText(written, rvx::kLoadAll), "what is written is read");
  fuzz::Require(second.ToText() == written, "what is read is what was written");

  double b0 = 0.0, b1 = 0.0, b2 = 0.0;
  record.GetCellConstants(record.injectionTemperature, b0, b1, b2);
  record.HasCellConstants(rvx::kAnyTemperature);
  const std::string id = record.GetInstrumentId();
  record.SetInstrumentId(id);
  fuzz::Require(record.GetInstrumentId() == id, "an id that was read can be set");
  return 0;
}
