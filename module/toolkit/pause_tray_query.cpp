#include "module/toolkit/pause_tray_query.h"

#include <ui_pause_tray.h>

#include <QButtonGroup>

namespace rvx {

CPauseTrayQuery::CPauseTrayQuery(const std::string& title, const std::vector<std::string>& answers,
                                 int initial, QWidget* parent)
    : CModalDialog(parent),
      form_(std::make_unique<Ui::PauseTrayQuery>()),
      group_(new QButtonGroup(this)),
      answer_(initial) {
  form_->setupUi(this);
  setWindowTitle(QString::fromStdString(title));
  group_->addButton(form_->now, 0);
  group_->addButton(form_->afterSample, 1);
  // The form has two buttons; a question with more answers gets more of them.
  for (size_t i = 2; i < answers.size(); ++i) {
    auto* more = new QRadioButton(this);
    form_->answers->addWidget(more);
    group_->addButton(more, static_cast<int>(i));
  }
  for (size_t i = 0; i < answers.size(); ++i) {
    group_->button(static_cast<int>(i))->setText(QString::fromStdString(answers[i]));
  }
  if (QAbstractButton* first = group_->button(initial)) first->setChecked(true);
  BindButtons();
}

CPauseTrayQuery::~CPauseTrayQuery() = default;

bool CPauseTrayQuery::OnOk() {
  answer_ = group_->checkedId();
  return true;
}

}  // namespace rvx
