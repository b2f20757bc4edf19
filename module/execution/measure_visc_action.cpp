#include "module/execution/measure_visc_action.h"

#include "module/execution/sample_action_editor.h"

namespace rvx {
namespace {

constexpr int kLabelId = 610;

}  // namespace

CMeasureViscAction::CMeasureViscAction(C_RVX& instrument) : C_RVXViscAction(instrument, kLabelId) {}

bool CMeasureViscAction::ShowEditor(SampleActionEditor& editor, bool /*firstEdit*/) {
  return editor.EditTests(*this, /*withKnownViscosity=*/false);
}

}  // namespace rvx
