// The editors of the two sample actions.
#pragma once

#include <memory>

#include "module/screens/samples/action_dialog.h"
#include "module/screens/samples/avail_chk_visc_data.h"
#include "module/screens/samples/avail_meas_visc_data.h"
#include "module/screens/samples/sample_tests_model.h"

namespace Ui {
class SampleTests;
}

namespace rvx {

class C_RVXViscAction;

// A table of up to 20 tests, and the injection and cool-down time of the sample. OK gives all of it
// to the action. GUI thread.
class SampleTestsEditor : public CActionDialog {
 public:
  ~SampleTestsEditor() override;

 protected:
  SampleTestsEditor(C_RVXViscAction& action, bool withKnownViscosity, QWidget* parent);
  // Fills the table; `available` must live as long as the dialog.
  void FillTable(CICAvailableData& available);
  const EditTable& table() const;

  bool OnOk() override;
  std::string GetHelpTopic() const override;

 private:
  void SetUpTimes();
  SampleTestsModel::Entries CollectEntries() const;
  void ShowRefusal(const SampleTestsModel::Outcome& outcome);

  SampleTestsModel model_;
  std::unique_ptr<Ui::SampleTests> form_;
};

// Temperatures and rotor ON times.
class CMeasureViscEditor final : public SampleTestsEditor {
 public:
  // `action` must outlive it.
  explicit CMeasureViscEditor(C_RVXViscAction& action, QWidget* parent = nullptr);

 private:
  CAvailMeasViscData data_;
};

// The same with known viscosities.
class CCheckViscEditor final : public SampleTestsEditor {
 public:
  explicit CCheckViscEditor(C_RVXViscAction& action, QWidget* parent = nullptr);

 private:
  CAvailChkViscData data_;
};

}  // namespace rvx
