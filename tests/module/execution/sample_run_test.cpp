// Whole runs of the sample actions: what is stored, written and reported.
#include <filesystem>
#include <fstream>
#include <sstream>

#include "module/execution/check_visc_action.h"
#include "module/execution/measure_visc_action.h"
#include "module/execution/sample_result.h"
#include "tests/module/execution/bench.h"

namespace rvx {
namespace {

constexpr size_t kSlotOfMinus20 = 4;

// Sets cell constants at -20 only.
void SetConstants(Bench& bench, double b0, double b1, double b2) {
  bench.instrument->Lock();
  ConfigurationFields& config = bench.instrument->configuration().fields;
  config.b0[kSlotOfMinus20] = b0;
  config.b1[kSlotOfMinus20] = b1;
  config.b2[kSlotOfMinus20] = b2;
  config.probeId = "probe 3";
  bench.instrument->Unlock();
}

int SamplesSinceCheck(Bench& bench) {
  bench.instrument->Lock();
  const int samples = bench.instrument->configuration().fields.samplesSinceCheck;
  bench.instrument->Unlock();
  return samples;
}

// Runs an action at position 4 to its end.
void RunToEnd(Action& action, RecordingWatcher& watcher) {
  action.Start(&watcher, "0,4");
  EXPECT_TRUE(watcher.WaitForFinish());
  action.Stop();  // waits until the run's thread no longer uses it
}

TEST(SampleRunTest, StoresOneSampleForEachTest) {
  InVirtualTime([] {
    Bench bench;
    SetConstants(bench, 1200.0, -50.0, 10.0);
    bench.SetTimes(2, 3, 20);
    bench.host.security.SetUser("Ada", 10);
    bench.instrument->SetInstrumentId("CCS 7");
    const auto action = bench.Make<CMeasureViscAction>(kMeasureViscAction);
    action->ResetToInstrumentDefaults();
    action->SetSampleId("10W-40");
    action->SetTestPoint(1, "-10", "0", 30);
    RecordingWatcher watcher;
    EXPECT_EQ(action->GetRunResult(), -1);
    RunToEnd(*action, watcher);
    EXPECT_EQ(action->GetRunResult(), 1);
    EXPECT_EQ(action->HasRun(), 1);
    EXPECT_EQ(action->IsRunning(), 0);
    EXPECT_EQ(bench.Heard(), "ST AB ST AB");
    EXPECT_EQ(SamplesSinceCheck(bench), 10002);

    const ArrayOfSamples samples = bench.host.samples.samples();
    ASSERT_EQ(samples.size(), 2u);
    const Sample& first = samples[0];
    EXPECT_EQ(first.sampleId, "10W-40");
    EXPECT_EQ(first.operatorName, "Ada");
    EXPECT_EQ(first.typeName, "RVX");
    EXPECT_EQ(first.instrument, "CCS 7");
    EXPECT_EQ(first.probeId, "probe 3");
    EXPECT_EQ(first.serialNumber, "SCRIPT-1");
    EXPECT_EQ(first.tray, 1);
    EXPECT_EQ(first.position, 5);
    EXPECT_EQ(first.kind, 1);
    EXPECT_EQ(first.valid, 1);
    EXPECT_EQ(first.knownViscosity, -2.0);
    EXPECT_NEAR(first.speed, 0.24, 1e-9);
    EXPECT_NEAR(first.averageTemperature, -20.0, 0.001);
    EXPECT_NEAR(first.viscosity, 4952.4, 1e-6);  // 1200 / 0.24 - 50 + 10 * 0.24
    const std::array<double, 7> constants = {1200.0, -50.0, 10.0, 5.0, 0.0, -20.0, 20.0};
    for (size_t i = 0; i < constants.size(); ++i) EXPECT_EQ(first.constants[i], constants[i]) << i;
    EXPECT_NEAR(first.constants[20], 0.24, 1e-9);
    EXPECT_NEAR(first.constants[24], 0.24, 1e-9);
    EXPECT_EQ(first.constants[25], 0.0);
    // No constants at -10: stored all the same.
    EXPECT_EQ(samples[1].viscosity, 0.0);
    EXPECT_EQ(samples[1].valid, 1);
    EXPECT_EQ(samples[1].constants[5], -10.0);
    EXPECT_EQ(samples[1].constants[6], 30.0);
    EXPECT_EQ(samples[1].id, samples[1].idCopy);
    EXPECT_NE(samples[0].id, samples[1].id);

    EXPECT_EQ(watcher.Count("status 0,4 Writing data"), 2);
    EXPECT_EQ(watcher.calls().front(), "started 0,4");
    EXPECT_EQ(watcher.calls().back(), "finished 0,4");
    EXPECT_EQ(watcher.Count("finished 0,4"), 1);
  });
}

// The constants are those of the measured temperature. A temperature at a limit belongs to the
// colder slot.
TEST(SampleRunTest, TakesTheConstantsOfTheMeasuredTemperature) {
  struct Case {
    double measured;
    size_t slot;
  };
  for (const Case& c :
       {Case{-18.9, 3}, Case{-19.1, 4}, Case{-7.3, 0}, Case{-7.6, 1}, Case{-40.0, 7}}) {
    InVirtualTime([&] {
      Bench bench;
      bench.instrument->Lock();
      for (size_t i = 0; i < 9; ++i) {
        bench.instrument->configuration().fields.b1[i] = static_cast<double>(i + 1);
      }
      bench.instrument->Unlock();
      bench.SetTimes(0, 0, 6);
      bench.controller.AtOperation(13, [&] { bench.controller.SetTemperature(c.measured); });
      const auto action = bench.Make<CMeasureViscAction>(kMeasureViscAction);
      RecordingWatcher watcher;
      RunToEnd(*action, watcher);
      ASSERT_EQ(bench.host.samples.samples().size(), 1u);
      const Sample sample = bench.host.samples.samples()[0];
      EXPECT_NEAR(sample.averageTemperature, c.measured, 0.002);
      EXPECT_EQ(sample.constants[kConstantB1], static_cast<double>(c.slot + 1)) << c.measured;
    });
  }
}

TEST(SampleRunTest, TooFewReadingsAreStoredAsSuch) {
  InVirtualTime([] {
    Bench bench;
    SetConstants(bench, 1200.0, -50.0, 10.0);
    bench.SetTimes(0, 0, 5);  // as many as are averaged: one pair too few
    const auto action = bench.Make<CMeasureViscAction>(kMeasureViscAction);
    RecordingWatcher watcher;
    RunToEnd(*action, watcher);
    ASSERT_EQ(bench.host.samples.samples().size(), 1u);
    const Sample sample = bench.host.samples.samples()[0];
    EXPECT_EQ(sample.constants[kConstantAveragingCount], 0.0);
    EXPECT_EQ(sample.speed, 0.0);
    EXPECT_EQ(sample.viscosity, 0.0);
    EXPECT_EQ(sample.averageTemperature, 0.0);
    EXPECT_EQ(sample.valid, 1);
    EXPECT_EQ(action->GetRunResult(), 1);
  });
}

TEST(SampleRunTest, AVerifyRunCarriesTheKnownViscosityAndResetsTheCheck) {
  InVirtualTime([] {
    Bench bench;
    bench.SetTimes(1, 1, 6);
    const auto action = bench.Make<CCheckViscAction>(kCheckViscAction);
    action->SetTestPoint(0, "-20", "4100.5", -1);
    bench.host.samples.storeFailures.FailNext(1);
    RecordingWatcher watcher;
    RunToEnd(*action, watcher);
    // It counts although its sample could not be stored.
    EXPECT_EQ(SamplesSinceCheck(bench), 0);
    const auto errors = bench.host.instruments.errors();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].source, bench.instrument.get());
    EXPECT_EQ(errors[0].position, 5);
    EXPECT_FALSE(errors[0].message.empty());
    EXPECT_EQ(action->GetRunResult(), 1);

    const auto second = bench.Make<CCheckViscAction>(kCheckViscAction);
    second->SetTestPoint(0, "-20", "4100.5", -1);
    RecordingWatcher secondWatcher;
    RunToEnd(*second, secondWatcher);
    ASSERT_EQ(bench.host.samples.samples().size(), 1u);
    EXPECT_EQ(bench.host.samples.samples()[0].constants[kConstantKnownViscosity], 4100.5);
    EXPECT_EQ(bench.host.samples.samples()[0].knownViscosity, -2.0);
  });
}

TEST(SampleRunTest, AFailedTestDropsTheRemainingOnes) {
  InVirtualTime([] {
    Bench bench;
    bench.SetTimes(1, 1, 6);
    const auto action = bench.Make<CMeasureViscAction>(kMeasureViscAction);
    action->ResetToInstrumentDefaults();
    action->SetSampleId("10W-40");
    action->SetTestPoint(1, "-10", "0", 6);
    bench.controller.AtOperation(12, [&] { bench.controller.RaiseError(0x41); });
    RecordingWatcher watcher;
    RunToEnd(*action, watcher);
    EXPECT_EQ(watcher.Count("finished 0,4"), 1);
    EXPECT_EQ(action->GetRunResult(), 0);
    EXPECT_EQ(action->HasRun(), 1);
    EXPECT_TRUE(bench.host.samples.samples().empty());
    EXPECT_EQ(SamplesSinceCheck(bench), 10000);
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 1, 1min));
    EXPECT_EQ(bench.Heard(), "ST AB");
    // One from the instrument itself, one from the run, in either order.
    ASSERT_TRUE(bench.host.instruments.WaitForErrors(2, 1min));
    const auto errors = bench.host.instruments.errors();
    ASSERT_EQ(errors.size(), 2u);
    const ActionErrorRecord& ofRun = errors[0].sampleId.empty() ? errors[1] : errors[0];
    EXPECT_EQ(ofRun.sampleId, "10W-40");
    EXPECT_EQ(ofRun.tray, 1);
    EXPECT_EQ(ofRun.position, 5);
  });
}

TEST(SampleRunTest, WritesTheReadingsAsCsv) {
  const std::filesystem::path folder =
      std::filesystem::path(testing::TempDir()) / "rvx_execution_csv";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  InVirtualTime(
      [&] {
        Bench bench;
        bench.SetTimes(0, 0, 3);
        const auto action = bench.Make<CMeasureViscAction>(kMeasureViscAction);
        action->SetSampleId("a/b");
        TestRecord tests = action->CopyTestRecord();
        tests.injectionTime = 0;
        tests.coolDownTime = 0;
        tests.rotorOnTimes[0] = 3;
        tests.csvFlag = 1;
        tests.saveLocation = folder.string() + "/";
        EXPECT_TRUE(action->AssignTests(tests, {}));
        RecordingWatcher watcher;
        RunToEnd(*action, watcher);
        // A missing folder is not a failure.
        const auto second = bench.Make<CMeasureViscAction>(kMeasureViscAction);
        tests.saveLocation = folder.string() + "/missing/";
        EXPECT_TRUE(second->AssignTests(tests, {}));
        RecordingWatcher secondWatcher;
        RunToEnd(*second, secondWatcher);
        EXPECT_EQ(second->GetRunResult(), 1);
        EXPECT_TRUE(bench.host.instruments.errors().empty());
      },
      1);
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    files.push_back(entry.path());
  }
  ASSERT_EQ(files.size(), 1u);
  // 31 January 2026, noon, is 823176000 s after the beginning of 2000; the run took a moment.
  EXPECT_EQ(files[0].filename().string().substr(0, 18), "a_b_-20.0C_8231760");
  std::stringstream text;
  text << std::ifstream(files[0], std::ios::binary).rdbuf();
  std::string expected = "Speed,Temperature\n";
  // -20.000347 is the reading of the counts that are sent for -20.0.
  for (int i = 0; i < 5; ++i) expected += "0.240000,-20.000347\n";
  EXPECT_EQ(text.str(), expected);
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace rvx
