// Shows tray runs to a person: a block that is redrawn on a terminal, plain lines elsewhere.
#pragma once

#include <string>
#include <vector>

#include "host/cli/output.h"
#include "host/tray/run_state.h"

namespace torvell {

// The owner's thread, but StepAside: any thread.
class RunView {
 public:
  enum class Mode { None, Lines, Live };
  RunView(Output& output, Mode mode);

  // How often the block wants to be redrawn; nothing when it needs no time of its own.
  std::optional<platform::Milliseconds> RefreshInterval() const;

  void Show(const RunEvent& event, const std::vector<RunState>& runs);
  void Refresh(const std::vector<RunState>& runs);
  // A line that stays, above the block.
  void Message(const std::string& text);
  // A question is to be printed (true) or has been answered.
  void StepAside(bool aside);
  // Leaves the block as it stands.
  void Finish(const std::vector<RunState>& runs);

 private:
  void ShowLine(const RunEvent& event, const std::vector<RunState>& runs);
  void EraseBlock() REQUIRES(lock_);

  Output& output_;
  const Mode mode_;
  platform::PlainLock lock_;
  bool aside_ GUARDED_BY(lock_) = false;
  size_t linesDrawn_ GUARDED_BY(lock_) = 0;
  std::string blockDrawn_ GUARDED_BY(lock_);
};

// The block's lines for one run: the tray, its running position with what it does, the progress.
std::vector<std::string> DescribeRun(const RunState& run, const rvx::InstrumentReadings& readings,
                                     platform::Microseconds now, const platform::Date& timeOfDay);

}  // namespace torvell
