// The editor of sample actions, as far as the actions need to know it. A program with a window puts
// its dialogs behind this; without one an edit shows nothing.
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
  // Lets the user edit the tests: true if they were accepted. `withKnownViscosity`: each test has a
  // known viscosity.
  virtual bool EditTests(C_RVXViscAction& action, bool withKnownViscosity) = 0;
};

// The editor in force, null without one.
SampleActionEditor* GetSampleActionEditor();

// Sets it; null takes it away. The caller keeps it alive while it is set.
void SetSampleActionEditor(SampleActionEditor* editor);

}  // namespace rvx
