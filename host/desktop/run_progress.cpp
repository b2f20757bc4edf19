#include "host/desktop/run_progress.h"

#include <algorithm>
#include <cmath>

#include "host/desktop/number_display.h"
#include "host/tray/number_text.h"

namespace torvell {

ProgressText DescribeProgress(const RunState& run, platform::Microseconds now,
                              const platform::Date& clock) {
  ProgressText text;
  text.percent = static_cast<int>(std::lround(run.PartDone(now) * 100.0));
  text.done = QStringLiteral("%1 of %2 samples").arg(run.samples()).arg(run.SamplesDue());
  if (run.finished()) return text;
  const auto left = static_cast<int64_t>(std::lround(run.SecondsLeft(now)));
  const QString duration = QString::fromStdString(DurationText(static_cast<long>(left)));
  text.left = run.paused() ? QStringLiteral("%1 left, paused").arg(duration)
                           : QStringLiteral("%1 left, ends at about %2")
                                 .arg(duration, DisplayClock(clock.PlusMilliseconds(left * 1000)));
  return text;
}

QString DescribeSummary(const RunSummary& summary) {
  const auto seconds =
      static_cast<long>(std::chrono::duration_cast<std::chrono::seconds>(summary.duration).count());
  const QString failed = summary.failedPositions == 0 ? QStringLiteral("no position failed")
                         : summary.failedPositions == 1
                             ? QStringLiteral("1 position failed")
                             : QStringLiteral("%1 positions failed").arg(summary.failedPositions);
  return QStringLiteral("%1: %2 of %3 samples, %4, took %5.")
      .arg(summary.aborted ? QStringLiteral("Run aborted") : QStringLiteral("Run finished"))
      .arg(summary.samples)
      .arg(summary.samplesDue)
      .arg(failed, QString::fromStdString(DurationText(seconds)));
}

QString DescribeLoss(const RunState& run) {
  QString text;
  const RunPosition* current = run.Current();
  if (current != nullptr) {
    QString sample = QString::fromStdString(current->plan.sampleId);
    if (!sample.isEmpty()) sample = QStringLiteral(" (\"%1\")").arg(sample);
    text = QStringLiteral("The test that runs at position %1%2 is lost. ")
               .arg(QString::number(current->plan.position + 1), sample);
  }
  const int missing = run.SamplesDue() - run.samples();
  return text + QStringLiteral(
                    "%1 of %2 samples will not be measured. The %3 that are stored stay "
                    "in the archive.")
                    .arg(missing)
                    .arg(run.SamplesDue())
                    .arg(run.samples());
}

}  // namespace torvell
