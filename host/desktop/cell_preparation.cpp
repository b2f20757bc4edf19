#include "host/desktop/cell_preparation.h"

#include "host/tray/preparation.h"

namespace torvell {

void CellPreparation::Start() {
  if (underWay_) return;
  underWay_ = true;
  if (!worker_) worker_ = std::make_unique<Worker>(gui_, "preparation " + entry_.identity.portName);
  Q_EMIT Notice(QStringLiteral("Preparing: the home flag is set and the cell is cooled."));
  Q_EMIT Changed();
  worker_->Do(
      this,
      [this] {
        PrepareSimulated(
            entry_, [this] { return cancelled_.load(); }, [](const auto&) {});
      },
      [this] {
        End();
        Q_EMIT Notice(QStringLiteral("The simulated instrument is ready."));
      },
      [this](const QString& text) {
        End();
        Q_EMIT Failed(text);
      });
}

void CellPreparation::End() {
  underWay_ = false;
  Q_EMIT Changed();
}

void CellPreparation::Finish() {
  if (worker_) worker_->Finish();
}

}  // namespace torvell
