// The progress of a run in numbers for a bar and in words. No widgets.
#pragma once

#include <QString>

#include "host/tray/run_state.h"

namespace torvell {

// The result of a run, kept until the user acknowledges it.
struct RunSummary {
  int samples = 0;
  int samplesDue = 0;
  int failedPositions = 0;
  int errors = 0;
  bool aborted = false;
  platform::Microseconds duration{0};
};

// The line below the tray about a run.
struct ProgressText {
  int percent = 0;
  QString done;  // "7 of 30 samples"
  QString left;  // "1:02:10 left, ends at 16:40:05"; empty where nothing can be said
};

// `now` and `clock` are the present moment of the time base, as monotonic time and as time of day.
ProgressText DescribeProgress(const RunState& run, platform::Microseconds now,
                              const platform::Date& clock);

// The headline of a finished run: "Run finished: 30 of 30 samples, none failed, 6:12:40."
QString DescribeSummary(const RunSummary& summary);

// Returns what an abort now would lose.
QString DescribeLoss(const RunState& run);

}  // namespace torvell
