// The action that preconditions the motor.
#pragma once

#include <string>

#include "boundary/action_keys.h"
#include "module/execution/base_action.h"

namespace rvx {

// Can be started again after its end.
class CPreconditionMotorAction final : public CBaseAction {
 public:
  static constexpr const char* kClassKey = kActionClassKeys[kPreconditionMotorAction];

  explicit CPreconditionMotorAction(C_RVX& instrument);
  ~CPreconditionMotorAction() override { StopRun(); }

  // Takes any context.
  void Start(ActionWatcher* watcher, const std::string& context) override;
  std::string GetClassName() override { return kClassKey; }
};

}  // namespace rvx
