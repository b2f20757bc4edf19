#include "module/execution/check_visc_action.h"

#include "module/execution/sample_action_editor.h"
#include "module/instrument/configuration_record.h"

namespace rvx {
namespace {

constexpr int kLabelId = 611;
constexpr int32_t kInjectionTime = 240;  // s
// So that a test whose viscosity was not entered still counts as one of known viscosity.
constexpr double kUnenteredViscosity = 1.0;  // mPa*s

}  // namespace

CCheckViscAction::CCheckViscAction(C_RVX& instrument) : C_RVXViscAction(instrument, kLabelId) {
  CCheckViscAction::ResetToInstrumentDefaults();
}

void CCheckViscAction::ResetToInstrumentDefaults() {
  platform::RecursiveGuard guard(lock_);
  C_RVXViscAction::ResetToInstrumentDefaults();
  knownViscosities_.fill(kUnenteredViscosity);
  testRecord_.injectionTime = kInjectionTime;
}

void CCheckViscAction::SampleComplete(Sample& /*sample*/, ConfigurationRecord& config) {
  ConfigurationGuard guard(config);
  config.fields.samplesSinceCheck = 0;
}

bool CCheckViscAction::ShowEditor(SampleActionEditor& editor, bool firstEdit) {
  if (firstEdit) {
    switch (editor.PickStandard(*this)) {
      case StandardPick::Picked:
        return true;
      case StandardPick::Cancelled:
        return false;
      case StandardPick::Other:
        break;
    }
  }
  return editor.EditTests(*this, /*withKnownViscosity=*/true);
}

}  // namespace rvx
