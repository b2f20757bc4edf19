#include "module/screens/samples/check_visc_list.h"

#include <ui_pick_standard.h>

#include "module/execution/visc_action.h"
#include "module/resources/string_ids.h"
#include "module/resources/string_table.h"
#include "module/toolkit/qt_prompter.h"
#include "platform/prompt.h"

namespace rvx {

CCheckViscList::CCheckViscList(C_RVXViscAction& action, QWidget* parent)
    : CActionDialog(action.instrument(), parent),
      action_(action),
      form_(std::make_unique<Ui::PickStandard>()) {
  form_->setupUi(this);
  if (const CStandardsMap* standards = action.instrument().GetStandards()) {
    lines_ = GetStandardLines(*standards);
  } else {
    platform::GetPrompter().Beep();
  }
  QStringList texts;
  for (const StandardLine& line : lines_) texts << QString::fromStdString(line.text);
  form_->standards->SetLines(texts);
  form_->empty->setVisible(lines_.empty());
  BindButtons();
  connect(form_->other, &QPushButton::clicked, this, [this] { done(kOther); });
}

CCheckViscList::~CCheckViscList() = default;

bool CCheckViscList::OnOk() {
  const int line = form_->standards->checkedLine();
  if (line < 0) {
    ShowFailure(LoadResourceString(kTextPickStandard));
    return false;
  }
  if (ApplyStandard(action_, lines_[static_cast<size_t>(line)])) return true;
  ShowFailure(LoadResourceString(kTextTryAgain));
  return false;
}

std::string CCheckViscList::GetHelpTopic() const {
  return "RVX.chm::/RVX/Sample_action_options.htm";
}

}  // namespace rvx
