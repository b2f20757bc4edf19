// Where a run leaves its figures and its history: memory that outlives the process, since a broken
// run ends its process at once.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace rvx::soak {

// Exit code of a run that broke an invariant.
inline constexpr int kBrokenRunExitCode = 71;

// The figures of a run, or their sums. Equal hashes mean equal runs.
struct RunFigures {
  uint64_t hash = 0;
  uint64_t switches = 0;
  uint64_t steps = 0;
  uint64_t simulated = 0;  // microseconds
  uint64_t samples = 0;    // stored
};

// Plain data in shared memory: one process writes, and another reads when the writer has ended.
class RunPage {
 public:
  // Maps a page that a forked child shares with its parent. Null if there is no memory. The caller
  // unmaps it.
  static RunPage* Map();
  static void Unmap(RunPage* page);

  void Begin(uint64_t seed);
  void Done(const RunFigures& figures);
  // Adds a line to the run's history; `time` in microseconds.
  void Note(int64_t time, std::string_view text);
  // Records the broken invariant and ends the process at once, without unwinding, since other
  // threads of the run are still at work.
  [[noreturn]] void Break(int64_t time, std::string_view what);

  // Adds the figures of a finished seed to the sums; Clear sets these back.
  void Count();
  void Clear();

  uint64_t seed() const { return seed_; }
  uint64_t seeds() const { return seeds_; }  // counted
  const RunFigures& sum() const { return sum_; }
  const RunFigures& figures() const { return figures_; }
  std::string broken() const { return broken_; }
  // The last lines, oldest first.
  std::string History(size_t lines) const;

 private:
  static constexpr size_t kLines = 4000;
  static constexpr size_t kLineSize = 160;
  struct Line {
    int64_t time;
    char text[kLineSize];
  };

  uint64_t seed_;
  RunFigures figures_;
  uint64_t seeds_;
  RunFigures sum_;
  char broken_[500];
  uint64_t count_;
  Line lines_[kLines];
};

}  // namespace rvx::soak
