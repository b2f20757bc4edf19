// The pick of a calibration standard for a new Verify Known Viscosity action.
#pragma once

#include <memory>
#include <vector>

#include "module/screens/samples/action_dialog.h"
#include "module/screens/samples/standard_choice.h"

namespace Ui {
class PickStandard;
}

namespace rvx {

class C_RVXViscAction;

// OK gives the picked standard to the action. GUI thread.
class CCheckViscList final : public CActionDialog {
 public:
  // The result of exec() when the user wants to enter the tests.
  static constexpr int kOther = 1080;

  // `action` must outlive it.
  explicit CCheckViscList(C_RVXViscAction& action, QWidget* parent = nullptr);
  ~CCheckViscList() override;

 protected:
  bool OnOk() override;
  std::string GetHelpTopic() const override;

 private:
  C_RVXViscAction& action_;
  std::unique_ptr<Ui::PickStandard> form_;
  std::vector<StandardLine> lines_;
};

}  // namespace rvx
