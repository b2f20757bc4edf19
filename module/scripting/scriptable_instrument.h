// The instrument with its operations for programs.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "boundary/instrument_scripting.h"
#include "module/calibration/standard_picker.h"
#include "module/instrument/c_rvx.h"

namespace rvx {

// The class of the instruments that discovery makes. The scripting operations use the public
// operations of C_RVX, as actions and screens do; C_RVX does not depend on them.
class ScriptableInstrument final : public C_RVX, public InstrumentScripting {
 public:
  // The arguments are those of C_RVX.
  ScriptableInstrument(const std::string& portName, uint8_t address,
                       const std::string& identification, const ActionTable& actions)
      : C_RVX(actions, OpenedLater()) {
    Open(portName, address, identification);
  }
  ~ScriptableInstrument() override { Close(); }

  InstrumentIdentity GetIdentity() override;
  InstrumentReadings GetReadings() override;
  bool WaitForReadings(uint64_t after, const platform::Deadline& deadline) override;
  std::string GetErrorText(uint8_t errorCode) override { return C_RVX::GetErrorText(errorCode); }

  std::vector<rvx::CellConstants> GetCellConstants() override;
  ScriptingResult SetCellConstants(double temperature, double b0, double b1, double b2) override;

  ScriptingResult FitCalibration(const CalibrationQuestion& question,
                                 CalibrationSummary& summary) override;
  ScriptingResult SaveCalibration(std::optional<double> temperature, const std::string& b0Text,
                                  const std::string& b1Text, const std::string& b2Text) override;
  ScriptingResult GetConformity(ConformityReport& report) override;
  ScriptingResult MakeCalibrationTray(const CalibrationTrayRequest& request) override;

  std::vector<InstrumentSetting> GetSettings() override;
  ScriptingResult SetSettings(
      const std::vector<std::pair<std::string, std::string>>& values) override;
  ScriptingResult ImportSettings(const std::string& text) override;

  ScriptingResult MakePdf(const SheetRequest& request, std::string& pdf) override;

  std::optional<SampleTests> GetSampleTests(Action& action) override;
  ScriptingResult SetSampleTests(Action& action, const SampleTests& tests) override;
  int32_t EstimateSeconds(Action& action) override;

  ScriptingResult MayServe() override;
  ScriptingResult SetHomeFlag() override;
  ScriptingResult SetTemperature(std::optional<double> celsius) override;
  ScriptingResult ChillSimulatedCell(double celsius) override;
  ScriptingResult SetSwitch(ServiceSwitch which, bool on) override;
  ScriptingResult JogAxis(ServiceAxis axis, int32_t target) override;
  ScriptingResult AbortOperation() override;
  ScriptingResult RunSelfTest(std::vector<std::string>& failures) override;

 private:
  ScriptingResult CheckTests(const SampleTests& tests, bool measures);
  // The slot of a calibration temperature in use, or the problem.
  ScriptingResult FindSlot(double temperature, int& slot);
  ScriptingResult MakePicker(std::optional<CStandardPicker>& picker,
                             std::vector<StandardGroupRow>& groups, std::string* groupFile);
};

}  // namespace rvx
