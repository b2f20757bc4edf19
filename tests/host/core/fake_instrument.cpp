#include "tests/host/core/fake_instrument.h"

#include "boundary/action_keys.h"

namespace torvell {

FakeInstrument::FakeInstrument(const std::string& port) {
  identity.portName = port;
  identity.archiveKey = "RVX" + port + ":0";
  identity.serialNumber = "S-" + port;
}

FakeInstrument::~FakeInstrument() {
  if (onDestroy) onDestroy();
}

void FakeInstrument::Fill(const std::string& sampleId, size_t tests) {
  planned_.push_back(std::make_shared<FakeAction>(
      rvx::kActionClassKeys[tests == 0 ? rvx::kNullAction : rvx::kMeasureViscAction], sampleId,
      tests));
  rvx::TrayGuard guard(tray_);
  const auto before = tray_.ReplaceAll(planned_);
}

rvx::Sample FakeInstrument::MakeSample(int32_t position) const {
  rvx::Sample sample;
  sample.instrument = instrumentId;
  sample.serialNumber = identity.serialNumber;
  sample.position = static_cast<uint16_t>(position + 1);
  sample.sampleId = "oil";
  return sample;
}

int32_t FakeInstrument::StartTray(rvx::TrayWatcher* w) {
  if (!startFailure.empty()) {
    rvx::ActionErrorRecord record;
    record.message = startFailure;
    throw new rvx::ActionException(record);
  }
  watcher = w;
  active = true;
  return 1;
}

int32_t FakeInstrument::QueryAbortTray() {
  if (!active) return 0;
  active = false;
  watcher->TrayFinished(0);
  return 1;
}

std::string FakeInstrument::SaveSettingsText() {
  std::string out = text + "\nTray 0\n";
  rvx::TrayGuard guard(tray_);
  for (int32_t i = 0; i < tray_.GetSize(); ++i) {
    out += tray_.GetAt(i)->GetClassName() + "\n" + tray_.GetAt(i)->GetStateText() + "\n";
  }
  return out;
}

std::optional<rvx::SampleTests> FakeInstrument::GetSampleTests(rvx::Action& action) {
  rvx::SampleTests tests;
  tests.tests.resize(dynamic_cast<FakeAction&>(action).tests);
  return tests;
}

}  // namespace torvell
