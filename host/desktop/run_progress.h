// How far a run is, in numbers for a bar and in words. No widgets.
#pragma once

#include <QString>

#include "host/tray/run_state.h"

namespace torvell {

// What a run came to, until somebody has taken notice.
struct RunSummary {
  int samples = 0;
  int samplesDue = 0;
  int failedPositions = 0;
  int errors = 0;
  bool aborted = false;
  platform::Microseconds duration{0};
};

// What the line below the tray says of a run.
struct ProgressText {
  int percent = 0;
  QString done;  // "7 of 30 samples"
  QString left;  // "1:02:10 left, ends at 16:40:05"; empty where nothing can be said
};

// `now` and `clock` are the moment in the base's time.
ProgressText DescribeProgress(const RunState& run, platform::Microseconds now,
                              const platform::Date& clock);

// The headline of a finished run: "Run finished: 30 of 30 samples, none failed, 6:12:40."
QString DescribeSummary(const RunSummary& summary);

// What would be lost by an abort now.
QString DescribeLoss(const RunState& run);

}  // namespace torvell
