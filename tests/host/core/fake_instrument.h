// An instrument for the host's tests: a settings text, a tray of actions with a name, and a tray
// run that does what the test says, step by step.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "boundary/host.h"
#include "boundary/instrument_scripting.h"

namespace torvell {

// An action with a class key, a sample id and a number of tests. It does nothing.
class FakeAction : public rvx::Action {
 public:
  FakeAction(std::string classKey, std::string sampleId, size_t testCount)
      : tests(testCount), classKey_(std::move(classKey)), sampleId_(std::move(sampleId)) {}
  void Stop() override {}
  void Start(rvx::ActionWatcher*, const std::string&) override {}
  int32_t IsConfigured() override { return 1; }
  int32_t HasRun() override { return 0; }
  int32_t Edit() override { return 1; }
  std::string GetLabel() override { return classKey_; }
  std::string GetClassName() override { return classKey_; }
  std::string GetSampleId() override { return sampleId_; }
  std::string GetStateText() override { return sampleId_; }
  void Lock() override {}
  int32_t IsRunning() override { return 0; }
  void SetSampleId(const std::string& text) override { sampleId_ = text; }
  void SetStateText(const std::string& text) override { sampleId_ = text; }
  int32_t GetRunResult() override { return -1; }
  void Unlock() override {}

  const size_t tests;

 private:
  const std::string classKey_;
  std::string sampleId_;
};

// The instrument of the tests. A test sets the public members; what it does not set has no effect.
class FakeInstrument : public rvx::ViscometerInstrument, public rvx::InstrumentScripting {
 public:
  explicit FakeInstrument(const std::string& port = "COM1");
  ~FakeInstrument() override;

  // Puts a sample action with a number of tests into the tray's next position.
  void Fill(const std::string& sampleId, size_t tests);
  void LeaveEmpty() { Fill("", 0); }
  // The result of a position (from 0), as the module would store it.
  rvx::Sample MakeSample(int32_t position) const;

  std::string text = "RVX\nid\nname\v1\v";
  std::string instrumentId = "RVX";
  std::string startFailure;             // message of StartTray; empty: it starts
  std::string loaded;                   // the text of the last LoadSettingsText
  rvx::TrayWatcher* watcher = nullptr;  // of the run; not owned
  bool active = false;
  int pauses = 0;
  std::function<void()> onDestroy;
  rvx::InstrumentIdentity identity;

  // ViscometerInstrument
  void StopTray(int32_t) override {}
  int32_t QueryAbortTray() override;
  int32_t StartTrayFor(int32_t, rvx::TrayWatcher* w) override { return StartTray(w); }
  int32_t StartTray(rvx::TrayWatcher* w) override;
  rvx::Action* CreateActionFromText(const std::string&) override { return nullptr; }
  rvx::Action* CreateActionByIndex(int32_t) override { return nullptr; }
  std::string GetHelpFile() override { return ""; }
  rvx::Action* CreateConfigAction(int32_t) override { return nullptr; }
  rvx::Action* CreateSampleAction(int32_t) override { return nullptr; }
  rvx::Action* CreateServiceAction(int32_t) override { return nullptr; }
  std::string SaveSettingsText() override;
  rvx::WindowHandle* ShowStatusWindow(rvx::WindowHandle*) override { return nullptr; }
  void CloseStatusWindow() override {}
  rvx::TrayOfSampleActions* GetTray(int32_t) override { return &tray_; }
  std::string GetTypeName() override { return "RVX"; }
  int32_t GetTrayCount() override { return 1; }
  std::string GetPortAddressText() override { return "RVX 0h"; }
  std::string GetInstrumentId() override { return instrumentId; }
  std::string GetInstrumentName() override { return "name"; }
  void PauseTray(int32_t, int32_t) override { ++pauses; }
  int32_t QueryPauseTray() override { return 0; }
  void ResumeTray(int32_t) override {}
  int32_t ContinueTray() override { return 0; }
  void LoadSettingsText(const std::string& newText, int32_t) override { loaded = newText; }
  void SetInstrumentId(const std::string& newId) override { instrumentId = newId; }
  void SetInstrumentName(const std::string&) override {}
  int32_t IsTrayRunning() override { return active ? 1 : 0; }
  int32_t IsTrayActive() override { return active ? 1 : 0; }
  int32_t IsTrayPaused() override { return 0; }
  int32_t IsIdle() override { return 1; }

  // InstrumentScripting
  rvx::InstrumentIdentity GetIdentity() override { return identity; }
  rvx::InstrumentReadings GetReadings() override { return {}; }
  bool WaitForReadings(uint64_t, const platform::Deadline&) override { return false; }
  std::string GetErrorText(uint8_t) override { return ""; }
  std::vector<rvx::CellConstants> GetCellConstants() override { return {}; }
  rvx::ScriptingResult SetCellConstants(double, double, double, double) override { return {}; }
  std::vector<rvx::InstrumentSetting> GetSettings() override { return {}; }
  rvx::ScriptingResult SetSettings(
      const std::vector<std::pair<std::string, std::string>>&) override {
    return {};
  }
  rvx::ScriptingResult ImportSettings(const std::string&) override { return {}; }
  rvx::ScriptingResult MakePdf(const rvx::SheetRequest&, std::string&) override { return {}; }
  std::optional<rvx::SampleTests> GetSampleTests(rvx::Action& action) override;
  rvx::ScriptingResult SetSampleTests(rvx::Action&, const rvx::SampleTests&) override { return {}; }
  int32_t EstimateSeconds(rvx::Action&) override { return 0; }
  rvx::ScriptingResult FitCalibration(const rvx::CalibrationQuestion&,
                                      rvx::CalibrationSummary&) override {
    return {};
  }
  rvx::ScriptingResult SaveCalibration(std::optional<double>, const std::string&,
                                       const std::string&, const std::string&) override {
    return {};
  }
  rvx::ScriptingResult GetConformity(rvx::ConformityReport&) override { return {}; }
  rvx::ScriptingResult MakeCalibrationTray(const rvx::CalibrationTrayRequest&) override {
    return {};
  }
  rvx::ScriptingResult MayServe() override { return {}; }
  rvx::ScriptingResult SetHomeFlag() override { return {}; }
  rvx::ScriptingResult SetTemperature(std::optional<double>) override { return {}; }
  rvx::ScriptingResult ChillSimulatedCell(double) override { return {}; }
  rvx::ScriptingResult SetSwitch(rvx::ServiceSwitch, bool) override { return {}; }
  rvx::ScriptingResult JogAxis(rvx::ServiceAxis, int32_t) override { return {}; }
  rvx::ScriptingResult AbortOperation() override { return {}; }
  rvx::ScriptingResult RunSelfTest(std::vector<std::string>&) override { return {}; }

 private:
  rvx::TrayOfSampleActions tray_{600};
  std::vector<std::shared_ptr<rvx::Action>> planned_;
};

// Makes a FakeInstrument and puts it into the host's list, which owns it.
template <class Host>
FakeInstrument& Adopt(Host& host, const std::string& port = "COM1") {
  auto* instrument = new FakeInstrument(port);
  host.instruments().Adopt({instrument});
  return *instrument;
}

}  // namespace torvell
