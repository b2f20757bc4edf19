// The question when to pause a tray.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "module/toolkit/modal_dialog.h"

class QButtonGroup;
namespace Ui {
class PauseTrayQuery;
}

namespace rvx {

// Radio buttons, one for each answer, with OK and Cancel. GUI thread.
class CPauseTrayQuery final : public CModalDialog {
 public:
  // At least two answers; `initial` is the index of the one that is set at the start.
  CPauseTrayQuery(const std::string& title, const std::vector<std::string>& answers, int initial,
                  QWidget* parent = nullptr);
  ~CPauseTrayQuery() override;

  // The index of the answer that OK has stored; the initial one before that.
  int answer() const { return answer_; }

 protected:
  bool OnOk() override;

 private:
  std::unique_ptr<Ui::PauseTrayQuery> form_;
  QButtonGroup* group_;  // owned by Qt's parenthood
  int answer_;
};

}  // namespace rvx
