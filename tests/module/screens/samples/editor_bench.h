// An instrument with standards and constants, and actions to edit.
#pragma once

#include <memory>
#include <string>

#include "boundary/standards_text.h"
#include "module/execution/check_visc_action.h"
#include "module/execution/measure_visc_action.h"
#include "tests/module/execution/bench.h"
#include "tests/support/gui.h"

namespace rvx {

// The actions are made at their first use. Used on the window's thread.
class EditorBench {
 public:
  EditorBench() { bench.host.userInterface = RunOnGuiThread; }
  ~EditorBench() {
    measure.reset();
    check.reset();
    RunBeside([this] { bench.instrument.reset(); });
  }

  void SetLevel(int level) { bench.host.security.SetUser("otto", level); }
  // Gives the cell constants at these temperatures and none at the others.
  void Calibrate(std::initializer_list<double> temperatures) {
    C_RVX& instrument = *bench.instrument;
    const ConfigurationGuard guard(instrument.configuration());
    ConfigurationFields& configuration = instrument.configuration().fields;
    configuration.b0.fill(0.0);
    for (size_t slot = 0; slot < kCalibrationTemperatures.size(); ++slot) {
      for (const double temperature : temperatures) {
        if (kCalibrationTemperatures[slot] == temperature) configuration.b0[slot] = 1000.0;
      }
    }
  }
  void SetStandards(const std::string& text) {
    bench.host.analysis.WriteAnalysisText(kStandardsArchiveName, kStandardsSection, text);
    bench.instrument->ReloadStandards();
  }
  CMeasureViscAction& Measure() {
    if (!measure) measure = bench.Make<CMeasureViscAction>(kMeasureViscAction);
    return *measure;
  }
  CCheckViscAction& Check() {
    if (!check) check = bench.Make<CCheckViscAction>(kCheckViscAction);
    return *check;
  }

  Bench bench;
  BeepCounter prompts;
  std::unique_ptr<CMeasureViscAction> measure;
  std::unique_ptr<CCheckViscAction> check;
};

}  // namespace rvx
