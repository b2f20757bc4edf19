#include "module/screens/samples/sample_tests_editor.h"

#include <ui_sample_tests.h>

#include "module/execution/visc_action.h"
#include "module/toolkit/qt_prompter.h"
#include "platform/prompt.h"

namespace rvx {
namespace {

constexpr uint8_t kTimeDigits = 3;
constexpr double kBelowTimes = 0.0;     // s
constexpr double kAboveTimes = 255.01;  // s
constexpr int kMaxTime = 255;           // s

}  // namespace

SampleTestsEditor::SampleTestsEditor(C_RVXViscAction& action, bool withKnownViscosity,
                                     QWidget* parent)
    : CActionDialog(action.instrument(), parent),
      model_(action, withKnownViscosity),
      form_(std::make_unique<Ui::SampleTests>()) {
  form_->setupUi(this);
  int number = 0;
  for (const SampleTestsModel::Column& column : model_.GetColumns()) {
    form_->tests->InsertColumn(number++, column.type, column.heading);
  }
  form_->tests->table().SetMaximumRows(kMaxTests);
  SetUpTimes();
  BindButtons();
}

SampleTestsEditor::~SampleTestsEditor() = default;

const EditTable& SampleTestsEditor::table() const { return form_->tests->table(); }

void SampleTestsEditor::FillTable(CICAvailableData& available) {
  form_->tests->SetAvailableData(&available);
  EditTable& table = form_->tests->table();
  for (const auto& row : model_.GetRows()) table.AppendRow(row);
  if (table.rowCount() < kMaxTests) table.AppendAddRow();
}

void SampleTestsEditor::SetUpTimes() {
  form_->injectionSpin->SetBuddy(form_->injectionTime);
  form_->coolDownSpin->SetBuddy(form_->coolDownTime);
  for (CNumEdit* field : {form_->injectionTime, form_->coolDownTime}) {
    field->SetRules(kTimeDigits, 0, kBelowTimes, kAboveTimes);
    field->setEnabled(model_.MayChangeTimes());
  }
  for (CSpinButtons* spin : {form_->injectionSpin, form_->coolDownSpin}) {
    spin->SetRange(0, kMaxTime);
    spin->setEnabled(model_.MayChangeTimes());
    spin->setVisible(model_.MayChangeTimes());
  }
  form_->injectionSpin->SetPosition(model_.GetInjectionTime());
  form_->coolDownSpin->SetPosition(model_.GetCoolDownTime());
}

SampleTestsModel::Entries SampleTestsEditor::CollectEntries() const {
  SampleTestsModel::Entries entries;
  for (int row = 0; row < table().dataRowCount(); ++row) {
    std::vector<std::string> cells;
    for (int column = 0; column < table().columnCount(); ++column) {
      cells.push_back(table().text(row, column));
    }
    entries.rows.push_back(std::move(cells));
  }
  entries.hasInjectionTime = !form_->injectionTime->text().isEmpty();
  entries.hasCoolDownTime = !form_->coolDownTime->text().isEmpty();
  entries.injectionTime = form_->injectionSpin->GetPosition();
  entries.coolDownTime = form_->coolDownSpin->GetPosition();
  return entries;
}

bool SampleTestsEditor::OnOk() {
  form_->tests->EndEdit();
  const SampleTestsModel::Outcome outcome = model_.Accept(CollectEntries());
  ShowRefusal(outcome);
  return outcome.refusal == SampleTestsModel::Refusal::None;
}

void SampleTestsEditor::ShowRefusal(const SampleTestsModel::Outcome& outcome) {
  using Refusal = SampleTestsModel::Refusal;
  switch (outcome.refusal) {
    case Refusal::None:
      break;
    case Refusal::NoTest:
      RefuseAt(*form_->tests);
      break;
    case Refusal::EmptyCell:
      form_->tests->table().SetCurrent(outcome.row, outcome.column);
      RefuseAt(*form_->tests);
      break;
    case Refusal::NoInjectionTime:
      RefuseAt(*form_->injectionTime);
      break;
    case Refusal::NoCoolDownTime:
      RefuseAt(*form_->coolDownTime);
      break;
    case Refusal::Started:
      ShowFailure(
          "The tests were not changed, because this sample was started while the dialog was open. "
          "It runs with the tests that it had. Press Cancel.");
      break;
    case Refusal::NotAllowed:
      ShowFailure(
          "The tests were not changed, because the present user may not change rotor, injection "
          "and cool-down times (level 50 is needed). Press Cancel, or log in with that level and "
          "press OK again.");
      break;
  }
}

std::string SampleTestsEditor::GetHelpTopic() const {
  return "RVX.chm::/RVX/Sample_action_options.htm";
}

CMeasureViscEditor::CMeasureViscEditor(C_RVXViscAction& action, QWidget* parent)
    : SampleTestsEditor(action, /*withKnownViscosity=*/false, parent), data_(action) {
  FillTable(data_);
}

CCheckViscEditor::CCheckViscEditor(C_RVXViscAction& action, QWidget* parent)
    : SampleTestsEditor(action, /*withKnownViscosity=*/true, parent), data_(action, table()) {
  FillTable(data_);
}

}  // namespace rvx
