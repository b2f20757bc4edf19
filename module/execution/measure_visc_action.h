// Measures an oil of unknown viscosity.
#pragma once

#include <string>

#include "boundary/action_keys.h"
#include "module/execution/visc_action.h"

namespace rvx {

class CMeasureViscAction final : public C_RVXViscAction {
 public:
  static constexpr const char* kClassKey = kActionClassKeys[kMeasureViscAction];

  explicit CMeasureViscAction(C_RVX& instrument);
  ~CMeasureViscAction() override { StopRun(); }

  std::string GetClassName() override { return kClassKey; }

 private:
  bool ShowEditor(SampleActionEditor& editor, bool firstEdit) override;
};

}  // namespace rvx
