// The stored text of a sample action.
#include <algorithm>

#include "fuzz/require.h"
#include "module/execution/sample_result.h"
#include "module/execution/visc_state_text.h"
#include "tests/support/fake_host.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const rvx::FakeHost host;
  const std::string text = fuzz::ToText(data, size);

  rvx::SampleActionState state;
  state.sampleId = "before";
  const std::string before = rvx::WriteSampleActionState(state);
  if (!rvx::ReadSampleActionState(text, state)) {
    fuzz::Require(rvx::WriteSampleActionState(state) == before, "a refused text changes nothing");
    return 0;
  }
  const std::string written = rvx::WriteSampleActionState(state);
  fuzz::Require(written.find_first_of(std::string("\n\0", 2)) == std::string::npos,
                "the text is one line of a settings text");
  fuzz::Require(std::count(written.begin(), written.end(), '\x0B') == 23, "23 fields are written");
  rvx::SampleActionState second;
  fuzz::Require(rvx::ReadSampleActionState(written, second), "what is written is read");
  fuzz::Require(rvx::WriteSampleActionState(second) == written, "what is read is what was written");
  fuzz::Require(rvx::EstimateRunSeconds(state.testRecord, state.testRecord.testCount) >= 0,
                "a run lasts no negative time");

  const std::string file = rvx::GetCsvFileName(state.sampleId, state.testRecord.testTemperatures[0],
                                               platform::Date(2026, 1, 5));
  fuzz::Require(file.find_first_of(std::string("/\\\n\r\0", 5)) == std::string::npos,
                "a sample id chooses no other folder");
  return 0;
}
