// The base of the two actions that measure an oil.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "boundary/sample.h"
#include "module/execution/base_action.h"
#include "module/execution/visc_state_text.h"
#include "module/instrument/test_record.h"

namespace rvx {

class ConfigurationRecord;
class SampleActionEditor;

// Holds up to 20 tests, each a temperature with a rotor ON time and, for an oil of known viscosity,
// the viscosity at that temperature. Runs once: a finished action refuses to be started or edited.
class C_RVXViscAction : public CBaseAction {
 public:
  // Requires the context of tray 0 and of a position of the tray. An action that is not configured
  // takes the instrument's test record first.
  void Start(ActionWatcher* watcher, const std::string& context) override;
  // Shows the editor that is set and returns 1 if the edit was accepted. A first edit that is
  // cancelled removes the action from its tray position. Without an editor an action that is not
  // configured takes the instrument's test record, and the result is 0. Throws ActionException for
  // an action that runs or has run.
  int32_t Edit() override;
  std::string GetStateText() override;
  // Takes known viscosities from the instrument's standards where the sample id names one, so call
  // it only on threads that may call GetStandards. Throws ActionException while the action runs. A
  // damaged text changes nothing, or only the values that it contains.
  void SetStateText(const std::string& text) override;
  // -1 before any run, 0 from the start of a run, 1 after a run whose tests all ended well.
  int32_t GetRunResult() override;
  int32_t LoadResources() override;

  // Copies the instrument's test record and clears the known viscosities.
  virtual void ResetToInstrumentDefaults();
  // Called on the run's thread before each sample is stored, with the launch record's lock held.
  virtual void SampleComplete(Sample& /*sample*/, ConfigurationRecord& /*config*/) {}

  // Sets the test at an index and makes it the last one; configures the action. Nothing happens for
  // an index of 20 or more, or below 0, nor while it runs or when it has run. `temperature`
  // (degrees C) may contain blanks. A rotor time of -1 keeps the present one.
  void SetTestPoint(int index, const std::string& temperature, const std::string& viscosity,
                    int rotorTime);
  // Takes all tests and times at once, configures the action and returns true. Returns false and
  // changes nothing while it runs or when it has run.
  bool AssignTests(const TestRecord& tests, const std::array<double, kMaxTests>& knownViscosities);
  // Copies of the parameters; those of an action that is not configured are its defaults.
  TestRecord CopyTestRecord();
  std::array<double, kMaxTests> CopyKnownViscosities();

 protected:
  C_RVXViscAction(C_RVX& instrument, int labelId);

  // Runs the dialogs of a class; returns whether the edit was accepted. Called with no lock held.
  virtual bool ShowEditor(SampleActionEditor& editor, bool firstEdit) = 0;

  // Also guarded by the action's lock.
  TestRecord testRecord_ GUARDED_BY(lock_);
  std::array<double, kMaxTests> knownViscosities_ GUARDED_BY(lock_){};

 private:
  friend class ViscRun;

  [[noreturn]] void RaiseForSample(StartFailure failure);
  // Takes known viscosities from the standards where they have one.
  void ApplyStandards(SampleActionState& state);
  // The position of this action in the tray, or -1.
  int32_t FindTrayPosition();

  int32_t runResult_ GUARDED_BY(lock_) = -1;
  std::string writingText_;  // constant after construction
};

}  // namespace rvx
