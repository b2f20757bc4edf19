// The dialogs in which sample actions are edited.
#pragma once

#include "module/execution/sample_action_editor.h"

namespace rvx {

// GUI thread.
class SampleEditor final : public SampleActionEditor {
 public:
  StandardPick PickStandard(C_RVXViscAction& action) override;
  bool EditTests(C_RVXViscAction& action, bool withKnownViscosity) override;
};

}  // namespace rvx
