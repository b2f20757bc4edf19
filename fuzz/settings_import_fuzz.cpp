// A settings text that somebody imports into an instrument: it is taken as a whole or not at all.
#include "fuzz/require.h"
#include "module/execution/action_classes.h"
#include "module/scripting/scriptable_instrument.h"
#include "platform/time_base.h"
#include "tests/support/fake_host.h"

namespace {

using rvx::ScriptableInstrument;

void LookAtTray(ScriptableInstrument& instrument) {
  rvx::TrayOfSampleActions& tray = *instrument.GetTray(0);
  rvx::TrayGuard guard(tray);
  fuzz::Require(tray.GetSize() >= 1 && tray.GetSize() <= 30, "a tray has 1 to 30 positions");
  for (int32_t position = 0; position < tray.GetSize(); ++position) {
    rvx::Action& action = *tray.GetAt(position);
    fuzz::Require(instrument.EstimateSeconds(action) >= 0, "a run lasts no negative time");
    const auto tests = instrument.GetSampleTests(action);
    fuzz::Require(!tests || tests->tests.size() <= 20, "a position has at most 20 tests");
  }
}

void Import(const std::string& text) {
  rvx::FakeHost host;
  host.ports.Add("COM1");
  ScriptableInstrument instrument("COM1", 0, "0QMTRVX 4 02.17SN-1      ", rvx::GetActionTable());
  const std::string before = instrument.SaveSettingsText();
  if (const rvx::ScriptingResult problem = instrument.ImportSettings(text)) {
    fuzz::Require(instrument.SaveSettingsText() == before, "a refused text changes nothing");
    fuzz::Require(!problem->found.empty(), "a refusal says why");
    return;
  }
  LookAtTray(instrument);
  for (const rvx::InstrumentSetting& setting : instrument.GetSettings()) {
    fuzz::Require(!setting.value.empty() || setting.unit.empty(), "a setting has a value");
  }
  const std::string taken = instrument.SaveSettingsText();
  fuzz::Require(!instrument.ImportSettings(taken), "what is written is accepted");
  fuzz::Require(instrument.SaveSettingsText() == taken, "what is read is what was written");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  platform::TimeBaseOptions options;
  options.kind = platform::TimeBaseKind::Virtual;
  options.seed = 1;
  options.startOfClock = platform::Date(2026, 1, 5, 8, 0, 0);
  platform::RunUnderTimeBase(options, [&] {
    Import(fuzz::ToText(data, size));
    return 0;
  });
  return 0;
}
