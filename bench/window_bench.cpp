// The host's window: how long it takes to appear, what it costs while a tray runs, how it scrolls.
#include <sys/resource.h>

#include <QApplication>
#include <QEventLoop>
#include <QScrollBar>
#include <QTableView>
#include <QTimer>
#include <memory>

#include "bench/measure.h"
#include "host/core/database.h"
#include "platform/time_base.h"
#include "tests/host/desktop/desktop_bench.h"

namespace torvell {
namespace {

constexpr int kPace = 50;
constexpr double kWatchedSeconds = 10.0;
constexpr int kScrollSteps = 300;
constexpr int kRows = 100000;

constexpr char kTray[] =
    "position,action,sample id,temperature,rotor on time,known viscosity,injection time,cool-down "
    "time\n"
    "1,measure,A,-20,,,,\n1,measure,A,-25,,,,\n2,measure,B,-20,,,,\n2,measure,B,-25,,,,\n"
    "3,measure,C,-20,,,,\n3,measure,C,-25,,,,\n4,measure,D,-20,,,,\n4,measure,D,-25,,,,\n";

double CpuSeconds(int who) {
  rusage usage{};
  getrusage(who, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// One sample stored by the host, and copies of it a second apart.
void FillArchive(Host& host) {
  rvx::Sample sample;
  sample.sampleId = "S";
  sample.timestamp = platform::Date(2026, 1, 1, 8, 0, 0);
  host.samples().StoreSample(sample);
  std::string columns;
  for (const SampleColumn& column : SampleColumns()) {
    if (column.name != "ID" && column.name != "Timestamp") columns += ", \"" + column.name + "\"";
  }
  ExecuteSql(host.database(),
             "WITH RECURSIVE N(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM N WHERE i < " +
                 std::to_string(kRows - 1) + ") INSERT INTO SAMPLES (\"ID\", \"Timestamp\"" +
                 columns +
                 ") SELECT printf('%08x', i) || substr(\"ID\", 9), strftime('%Y-%m-%dT%H:%M:%S', "
                 "'2026-01-01 08:00:00', i || "
                 "' seconds')" +
                 columns + " FROM N, SAMPLES WHERE SAMPLES.rowid = 1");
}

// CPU while a tray runs, and how late the window's thread handles an event.
void WatchRun(DesktopBench& bench, bench::Report& report) {
  bench.LoadTray(kTray);
  bench.PrepareInstrument();
  bench.session().Start();
  if (!DesktopBench::Until([&] { return bench.session().IsRunning(); })) {
    bench::Fail("the tray did not start");
  }
  const auto delays = std::make_shared<std::vector<double>>();  // the last ones arrive afterwards
  QTimer clicks;
  QObject::connect(&clicks, &QTimer::timeout, [&] {
    const double given = bench::Now();
    bench.gui().Post([delays, given] { delays->push_back((bench::Now() - given) * 1e3); });
  });
  clicks.start(20);
  const double start = bench::Now();
  const double window = CpuSeconds(RUSAGE_THREAD);
  const double all = CpuSeconds(RUSAGE_SELF);
  QEventLoop loop;
  QTimer::singleShot(static_cast<int>(kWatchedSeconds * 1e3), &loop, &QEventLoop::quit);
  loop.exec();
  const double elapsed = bench::Now() - start;
  clicks.stop();
  if (!bench.session().IsRunning()) bench::Fail("the tray ended while it was watched");
  report.Add("run_window_cpu_percent", (CpuSeconds(RUSAGE_THREAD) - window) / elapsed * 100);
  report.Add("run_process_cpu_percent", (CpuSeconds(RUSAGE_SELF) - all) / elapsed * 100);
  report.Add("run_delay_median_ms", bench::Median(*delays));
  report.Add("run_delay_worst_ms", bench::Quantile(*delays, 1.0));
}

void Scroll(DesktopBench& bench, bench::Report& report) {
  FillArchive(bench.host());
  SamplesModel& model = bench.window().samplesPage().model();
  const double start = bench::Now();
  model.Refresh();
  if (!DesktopBench::Until([&] { return model.rowCount() == kRows; })) {
    bench::Fail("the samples were not found");
  }
  report.Add("search_ms", (bench::Now() - start) * 1e3);
  auto* table = bench.window().samplesPage().findChild<QTableView*>();
  std::vector<double> frames;
  for (int step = 0; step < kScrollSteps; ++step) {
    const double begin = bench::Now();
    table->verticalScrollBar()->setValue(table->verticalScrollBar()->maximum() / kScrollSteps *
                                         step);
    QCoreApplication::processEvents();
    frames.push_back((bench::Now() - begin) * 1e3);
  }
  report.Add("scroll_median_ms", bench::Median(frames));
  report.Add("scroll_worst_ms", bench::Quantile(frames, 1.0));
}

int Measure(double programStart) {
  bench::Report report;
  DesktopBench bench;
  bench.window().show();
  // An offscreen window is painted when its events have been handled.
  QCoreApplication::processEvents();
  bench.window().grab();
  report.Add("first_paint_ms", (bench::Now() - programStart) * 1e3);
  bench.Open();
  bench.ActAs("martin");
  WatchRun(bench, report);
  Scroll(bench, report);
  report.Print();
  return 0;
}

}  // namespace
}  // namespace torvell

int main(int argc, char** argv) {
  const double programStart = bench::Now();
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  platform::TimeBaseOptions base;
  base.kind = platform::TimeBaseKind::Paced;
  base.pace = torvell::kPace;
  return platform::RunUnderTimeBase(base,
                                    [programStart] { return torvell::Measure(programStart); });
}
