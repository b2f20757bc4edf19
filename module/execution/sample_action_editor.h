// The editor of sample actions, as an interface for the actions. A program with windows implements
// it with its dialogs; without one an edit shows nothing.
#pragma once

namespace rvx {

class C_RVXViscAction;

enum class StandardPick {
  Picked,  // the action has taken the standard's name, temperature and viscosity
  Other,   // the user wants to enter the tests
  Cancelled
};

// Called on the user-interface thread, with no lock held. The editor changes the action through its
// operations, which refuse while it runs.
class SampleActionEditor {
 public:
  virtual ~SampleActionEditor() = default;
  // Lets the user choose a calibration standard for an action that has never been edited.
  virtual StandardPick PickStandard(C_RVXViscAction& action) = 0;
  // Lets the user edit the tests; returns true if they were accepted. `withKnownViscosity`: each
  // test has a known viscosity.
  virtual bool EditTests(C_RVXViscAction& action, bool withKnownViscosity) = 0;
};

// The editor that is set, null if there is none.
SampleActionEditor* GetSampleActionEditor();

// Sets the editor; null removes it. The caller keeps it alive while it is set.
void SetSampleActionEditor(SampleActionEditor* editor);

}  // namespace rvx
