#include "module/screens/samples/sample_editor.h"

#include "module/screens/samples/check_visc_list.h"
#include "module/screens/samples/sample_tests_editor.h"
#include "module/toolkit/run_dialog.h"

namespace rvx {

StandardPick SampleEditor::PickStandard(C_RVXViscAction& action) {
  switch (RunDialog(std::make_unique<CCheckViscList>(action))) {
    case QDialog::Accepted:
      return StandardPick::Picked;
    case CCheckViscList::kOther:
      return StandardPick::Other;
    default:
      return StandardPick::Cancelled;
  }
}

bool SampleEditor::EditTests(C_RVXViscAction& action, bool withKnownViscosity) {
  const int result = withKnownViscosity ? RunDialog(std::make_unique<CCheckViscEditor>(action))
                                        : RunDialog(std::make_unique<CMeasureViscEditor>(action));
  return result == QDialog::Accepted;
}

}  // namespace rvx
