// Measures an oil whose viscosity is known: a calibration standard.
#pragma once

#include <string>

#include "boundary/action_keys.h"
#include "module/execution/visc_action.h"

namespace rvx {

// Each test has a known viscosity, which the calibration reads from the stored sample. A finished
// sample sets the count of samples since the last check standard back to 0.
class CCheckViscAction final : public C_RVXViscAction {
 public:
  static constexpr const char* kClassKey = kActionClassKeys[kCheckViscAction];

  explicit CCheckViscAction(C_RVX& instrument);
  ~CCheckViscAction() override { StopRun(); }

  std::string GetClassName() override { return kClassKey; }
  // Known viscosities of 1.0 and an injection time of 240 s, whatever the instrument's is.
  void ResetToInstrumentDefaults() override;
  void SampleComplete(Sample& sample, ConfigurationRecord& config) override;

 private:
  bool ShowEditor(SampleActionEditor& editor, bool firstEdit) override;
};

}  // namespace rvx
