#include "module/screens/samples/sample_editor.h"

#include <QPointer>

#include "module/screens/samples/check_visc_list.h"
#include "module/screens/samples/sample_tests_editor.h"

namespace rvx {
namespace {

// On the heap and looked at again: the host may destroy the parent, and the dialog with it, while
// it is open.
template <class Dialog>
int Show(C_RVXViscAction& action) {
  const QPointer<Dialog> dialog = new Dialog(action);
  const int result = dialog->exec();
  delete dialog;
  return result;
}

}  // namespace

StandardPick SampleEditor::PickStandard(C_RVXViscAction& action) {
  switch (Show<CCheckViscList>(action)) {
    case QDialog::Accepted:
      return StandardPick::Picked;
    case CCheckViscList::kOther:
      return StandardPick::Other;
    default:
      return StandardPick::Cancelled;
  }
}

bool SampleEditor::EditTests(C_RVXViscAction& action, bool withKnownViscosity) {
  const int result =
      withKnownViscosity ? Show<CCheckViscEditor>(action) : Show<CMeasureViscEditor>(action);
  return result == QDialog::Accepted;
}

}  // namespace rvx
