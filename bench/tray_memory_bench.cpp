// Many full trays, one after another, in one process under virtual time: what a tray costs in task
// switches, and that memory does not grow.
// Usage: tray_memory_bench FOLDER [TRAYS]
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "host/core/host.h"

namespace {

constexpr int kPositions = 30;
constexpr double kTestTemperature = -20.0;
// A tray starts below 10 degrees C.
constexpr double kColdEnough = 9.5;
constexpr double kCoolingTarget = 5.0;
constexpr platform::Milliseconds kPatience{3600 * 1000};
constexpr platform::Milliseconds kTrayLimit{24 * 3600 * 1000};

struct Memory {
  double residentKb = 0;  // pages of the process that are in memory
  double heapKb = 0;      // bytes that the program has allocated and not freed
};

Memory MemoryNow() {
  long size = 0, resident = 0;
  FILE* file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr || std::fscanf(file, "%ld %ld", &size, &resident) != 2) {
    bench::Fail("the system does not say how much memory is used");
  }
  std::fclose(file);
  const struct mallinfo2 info = mallinfo2();
  return {static_cast<double>(resident * sysconf(_SC_PAGESIZE)) / 1024,
          static_cast<double>(info.uordblks + info.hblkhd) / 1024};
}

void Check(const rvx::ScriptingResult& refused) {
  if (refused) bench::Fail(refused->Sentences());
}

// Waits for readings of which `done` is true.
void WaitUntil(rvx::InstrumentScripting& scripting,
               const std::function<bool(const rvx::InstrumentReadings&)>& done) {
  const platform::Deadline deadline = platform::Deadline::After(kPatience);
  for (;;) {
    const rvx::InstrumentReadings readings = scripting.GetReadings();
    if (readings.sequence > 0 && done(readings)) return;
    if (!scripting.WaitForReadings(readings.sequence, deadline)) {
      bench::Fail("the instrument never got ready");
    }
  }
}

void FillTray(const torvell::InstrumentEntry& entry) {
  std::vector<std::shared_ptr<rvx::Action>> actions;
  for (int i = 0; i < kPositions; ++i) {
    std::shared_ptr<rvx::Action> action(entry.instrument->CreateSampleAction(1));
    action->SetSampleId("oil " + std::to_string(i + 1));
    rvx::SampleTests tests;
    tests.tests.push_back({kTestTemperature, {}, {}});
    Check(entry.scripting->SetSampleTests(*action, tests));
    actions.push_back(std::move(action));
  }
  rvx::TrayOfSampleActions& tray = *entry.instrument->GetTray(0);
  {
    const rvx::TrayGuard guard(tray);
    if (tray.GetSize() != kPositions) bench::Fail("the tray has another size");
    actions = tray.ReplaceAll(std::move(actions));
  }
}

void Cool(rvx::InstrumentScripting& scripting) {
  Check(scripting.SetTemperature(kCoolingTarget));
  WaitUntil(scripting, [](const auto& readings) { return readings.temperature < kColdEnough; });
  Check(scripting.SetTemperature(std::nullopt));
  WaitUntil(scripting, [](const auto& readings) {
    return readings.machineStatus == 0 && readings.switchByte == 0 && readings.errorCode == 0;
  });
}

void RunTray(torvell::Host& host, const torvell::InstrumentEntry& entry) {
  FillTray(entry);
  Cool(*entry.scripting);
  const int64_t before = host.samples().Count();
  const auto runner = host.StartTray(entry, nullptr);
  if (!runner->finished().Wait(kTrayLimit)) bench::Fail("a tray did not end");
  if (host.samples().Count() != before + kPositions) bench::Fail("a tray lost samples");
}

void RunTrays(const std::string& folder, int count, bench::Report& report) {
  torvell::HostOptions options;
  options.dataFolder = folder;
  options.simulate = true;
  options.seed = 1;
  const std::unique_ptr<torvell::Host> host = torvell::Host::Open(options);
  if (host->DiscoverInstruments() != 1) bench::Fail("no simulated instrument was found");
  const torvell::InstrumentEntry entry = host->instruments().Entries().front();
  Check(entry.scripting->SetCellConstants(kTestTemperature, 1100, -400, 0));
  Check(entry.scripting->SetHomeFlag());

  // The database's cache of 2 MB fills in the first half and stays.
  const int settled = count / 2;
  Memory start;
  uint64_t switches = 0;
  platform::Microseconds simulated{0};
  const double began = bench::Now();
  for (int i = 0; i < count; ++i) {
    RunTray(*host, entry);
    if (i + 1 == settled) {
      start = MemoryNow();
      switches = platform::GetTimeBaseFigures().switches;
      simulated = platform::MonotonicTime();
    }
  }
  const Memory end = MemoryNow();
  const double rest = count - settled;
  const double seconds =
      static_cast<double>((platform::MonotonicTime() - simulated).count()) * 1e-6;
  const auto used = static_cast<double>(platform::GetTimeBaseFigures().switches - switches);
  report.Add("trays", count);
  report.Add("tray_ms", (bench::Now() - began) * 1000 / count);
  report.Add("tray_simulated_s", seconds / rest);
  report.Add("tray_switches", used / rest);
  report.Add("switches_per_simulated_s", used / seconds);
  report.Add("settled_after", settled);
  report.Add("resident_start_kb", start.residentKb);
  report.Add("resident_end_kb", end.residentKb);
  report.Add("heap_start_kb", start.heapKb);
  report.Add("heap_end_kb", end.heapKb);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) bench::Fail("usage: tray_memory_bench FOLDER [TRAYS]");
  const int trays = argc > 2 ? std::stoi(argv[2]) : 200;
  if (trays < 2) bench::Fail("growth needs two trays or more");
  const bench::WorkFolder folder(argv[1]);
  platform::TimeBaseOptions base;
  base.kind = platform::TimeBaseKind::Virtual;
  base.seed = 1;
  base.startOfClock = platform::Date(2026, 1, 5, 8, 0, 0);
  bench::Report report;
  const int code = platform::RunUnderTimeBase(base, [&] {
    RunTrays(folder.path() + "/data", trays, report);
    return 0;
  });
  report.Print();
  return code;
}
