// The action that moves the instrument to a tray position.
#pragma once

#include <string>

#include "boundary/action_keys.h"
#include "module/execution/base_action.h"

namespace rvx {

// Can be started again after its end.
class CMoveStepperAction final : public CBaseAction {
 public:
  static constexpr const char* kClassKey = kActionClassKeys[kMoveStepperAction];

  explicit CMoveStepperAction(C_RVX& instrument);
  ~CMoveStepperAction() override { StopRun(); }

  // Requires the context of tray 0 and of a position of the tray.
  void Start(ActionWatcher* watcher, const std::string& context) override;
  std::string GetClassName() override { return kClassKey; }
};

}  // namespace rvx
