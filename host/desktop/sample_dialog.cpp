#include "host/desktop/sample_dialog.h"

#include <utility>

#include "host/desktop/worker.h"

namespace torvell {

void SampleDialog::Ask(std::function<void()> ask) {
  if (phase_ != Phase::None) return;
  phase_ = Phase::Waiting;
  jobs_.WhenIdle([this, ask = std::move(ask)] {
    phase_ = Phase::None;
    if (run_.phase() == RunPhase::Idle && !jobs_.IsClosing()) ask();
  });
}

void SampleDialog::Add(int kind, const std::vector<int>& positions) {
  Ask([this, kind, positions] {
    const std::vector<TrayCell>& cells = jobs_.tray().cells;
    std::vector<int> empty;
    for (const int position : positions) {
      if (position < static_cast<int>(cells.size()) &&
          cells[static_cast<size_t>(position)].empty()) {
        empty.push_back(position);
      }
    }
    if (empty.empty()) {
      Q_EMIT Notice(
          QStringLiteral("The selected positions are filled. Select empty ones, or clear them "
                         "first."));
      return;
    }
    Show([this, kind] { return store_.MakeSample(kind); }, empty);
  });
}

void SampleDialog::Edit(int position) {
  Ask([this, position] {
    const std::vector<TrayCell>& cells = jobs_.tray().cells;
    if (position < 0 || position >= static_cast<int>(cells.size())) return;
    const TrayCell cell = cells[static_cast<size_t>(position)];
    if (!cell.empty()) Show([this, cell] { return store_.MakeCopy(cell); }, {position});
  });
}

void SampleDialog::Show(ActionMaker make, const std::vector<int>& positions) {
  phase_ = Phase::Making;
  auto action = std::make_shared<std::shared_ptr<rvx::Action>>();
  jobs_.Do([make = std::move(make), action] { *action = make(); },
           [this, action, positions] {
             TrayEdit edit;
             if (!jobs_.IsClosing()) edit = Run(**action, positions);
             phase_ = Phase::None;
             editor_.Change([edit](const std::vector<TrayCell>&) { return edit; });
           },
           [this] { phase_ = Phase::None; });
}

TrayEdit SampleDialog::Run(rvx::Action& action, const std::vector<int>& positions) {
  TrayEdit edit;
  phase_ = Phase::Open;
  try {
    if (action.Edit() != 0) {
      for (const int position : positions) edit[position] = CellOf(action);
    }
  } catch (...) {
    Q_EMIT Failed(DescribeRaised());
    return {};
  }
  return edit;
}

}  // namespace torvell
