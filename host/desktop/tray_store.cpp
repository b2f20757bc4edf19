#include "host/desktop/tray_store.h"

namespace torvell {

int TraySnapshot::EstimatedSeconds() const {
  int seconds = 0;
  for (const TrayPosition& position : filled) seconds += position.estimatedSeconds;
  return seconds;
}

TraySnapshot InstrumentTray::Read() {
  TraySnapshot snapshot;
  snapshot.size = TraySize(entry_);
  snapshot.filled = ReadTray(entry_);
  snapshot.cells = ReadCells(entry_);
  return snapshot;
}

TrayEdit InstrumentTray::Apply(const TrayEdit& edit) { return ApplyEdit(host_, entry_, edit); }

TrayEdit InstrumentTray::Load(const std::string& path) {
  host_.users().Require(kLevelOperator, "load a tray");
  TrayActions actions = BuildTray(entry_, path);
  const std::vector<TrayCell> cells = ReadCells(entry_);
  TrayEdit before;
  for (size_t i = 0; i < cells.size(); ++i) before[static_cast<int>(i)] = cells[i];
  ReplaceTray(host_, entry_, std::move(actions));
  CloseInterrupted(host_, entry_);
  return before;
}

std::vector<std::string> InstrumentTray::KeepRest() {
  const auto interrupted = host_.journal().InterruptedOf(entry_.identity.archiveKey);
  if (!interrupted) return {};
  std::vector<std::string> notices = KeepWhatIsNotMeasured(host_, entry_, *interrupted);
  host_.journal().Close(interrupted->run);
  return notices;
}

void InstrumentTray::DropInterrupted() {
  ReplaceTray(host_, entry_, EmptyTray(entry_));
  CloseInterrupted(host_, entry_);
}

std::shared_ptr<rvx::Action> InstrumentTray::MakeSample(int kind) {
  host_.users().Require(kLevelOperator, "change the tray");
  return std::shared_ptr<rvx::Action>(entry_.instrument->CreateSampleAction(kind));
}

std::shared_ptr<rvx::Action> InstrumentTray::MakeCopy(const TrayCell& cell) {
  host_.users().Require(kLevelOperator, "change the tray");
  return MakeAction(entry_, cell);
}

}  // namespace torvell
