// Shows tray runs to a person: a block that is redrawn on a terminal, plain lines elsewhere.
#pragma once

#include <string>
#include <vector>

#include "host/cli/output.h"
#include "host/tray/run_state.h"

namespace torvell {

// The owner's thread only, except StepAside: any thread.
class RunView {
 public:
  enum class Mode { None, Lines, Live };
  RunView(Output& output, Mode mode);

  // Returns how often Refresh is to be called; nothing if only events change the display.
  std::optional<platform::Milliseconds> RefreshInterval() const;

  void Show(const RunEvent& event, const std::vector<RunState>& runs);
  void Refresh(const std::vector<RunState>& runs);
  // Prints a line that stays, above the block.
  void Message(const std::string& text);
  // Erases the block before a question is printed (true), or allows drawing again after the answer
  // (false).
  void StepAside(bool aside);
  // Draws the block a last time and leaves it on the terminal.
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

// Returns the block's lines for one run: the tray, its running position with its status, the
// progress.
std::vector<std::string> DescribeRun(const RunState& run, const rvx::InstrumentReadings& readings,
                                     platform::Microseconds now, const platform::Date& timeOfDay);

}  // namespace torvell
