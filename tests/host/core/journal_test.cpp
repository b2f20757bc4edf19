// What the next start finds after a host was killed. Destroying a journal without ending its run
// has the effect of a kill: the rows stay, and the system releases the mark.
#include "host/core/journal.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/core/run_marks.h"
#include "host/core/sample_spool.h"
#include "tests/host/core/temp_folder.h"

namespace torvell {
namespace {

TrayPlan MakePlan() {
  TrayPlan plan;
  plan.archiveKey = "RVXCOM1:0";
  plan.instrumentId = "RVX";
  plan.serialNumber = "S1";
  plan.positions = {{0, "Measure", "a", 2}, {1, "Measure", "b", 2}, {4, "Verify", "c", 1}};
  return plan;
}

rvx::Sample MakeSample(int position) {
  rvx::Sample sample;
  sample.instrument = "RVX";
  sample.serialNumber = "S1";
  sample.position = static_cast<uint16_t>(position + 1);
  return sample;
}

void Measure(TrayJournal& journal, SampleStore& samples, int64_t run, int position, int tests) {
  journal.NoteSampleStarted(run, position);
  for (int i = 0; i < tests; ++i) samples.StoreSample(MakeSample(position));
}

TEST(Journal, AKilledHostFindsWhatWasMeasured) {
  TempFolder folder;
  int64_t run = 0;
  {
    const auto host = OpenHost(folder);
    run = host->journal().Begin(MakePlan());
    Measure(host->journal(), host->samples(), run, 0, 2);
    host->journal().NoteSampleFinished(run, 0);
    Measure(host->journal(), host->samples(), run, 1, 1);
    EXPECT_TRUE(host->journal().Interrupted().empty()) << "it is running";
  }
  const auto host = OpenHost(folder);
  ASSERT_EQ(host->notices().size(), 1u);
  EXPECT_NE(host->notices()[0].find("1 of 3 positions"), std::string::npos) << host->notices()[0];
  const auto tray = host->journal().InterruptedOf("RVXCOM1:0");
  ASSERT_TRUE(tray);
  EXPECT_FALSE(host->journal().InterruptedOf("RVXCOM2:0"));
  ASSERT_EQ(tray->positions.size(), 3u);
  EXPECT_EQ(tray->positions[0].state, PositionState::Measured);
  EXPECT_EQ(tray->positions[1].state, PositionState::PartlyMeasured);
  EXPECT_EQ(tray->positions[1].stored, 1);
  EXPECT_EQ(tray->positions[1].tests, 2);
  EXPECT_EQ(tray->positions[2].state, PositionState::NotRun);
  EXPECT_EQ(tray->positions[2].position, 4);
  EXPECT_EQ(tray->positions[2].sampleId, "c");

  host->journal().Close(tray->run);
  EXPECT_TRUE(host->journal().Interrupted().empty());
}

TEST(Journal, APositionThatRunsAgainCountsFromItsStart) {
  TempFolder folder;
  {
    const auto host = OpenHost(folder);
    const int64_t run = host->journal().Begin(MakePlan());
    Measure(host->journal(), host->samples(), run, 0, 1);
    Measure(host->journal(), host->samples(), run, 0, 1);
  }
  const auto tray = OpenHost(folder)->journal().InterruptedOf("RVXCOM1:0");
  ASSERT_TRUE(tray);
  EXPECT_EQ(tray->positions[0].state, PositionState::PartlyMeasured);
}

// The moves before and after the samples are reported as starts of the first position.
TEST(Journal, AStartWithoutAResultTakesNothingBack) {
  TempFolder folder;
  {
    const auto host = OpenHost(folder);
    const int64_t run = host->journal().Begin(MakePlan());
    host->journal().NoteSampleStarted(run, 0);
    Measure(host->journal(), host->samples(), run, 0, 2);
    host->journal().NoteSampleFinished(run, 0);
    host->journal().NoteSampleStarted(run, 0);
  }
  const auto tray = OpenHost(folder)->journal().InterruptedOf("RVXCOM1:0");
  ASSERT_TRUE(tray);
  EXPECT_EQ(tray->positions[0].state, PositionState::Measured);
}

// Another process can hold the mark of a number for a moment, when its own run could not be noted.
// A run without a mark would look interrupted to every process.
TEST(Journal, ARunThatCannotBeMarkedDoesNotBegin) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  const int64_t run = host->journal().Begin(MakePlan());
  host->journal().End(run, "ended");
  RunMarks others(folder / "trays.lock");
  ASSERT_TRUE(others.Take(run + 1));
  EXPECT_EQ(KindRaisedBy([&] { host->journal().Begin(MakePlan()); }), HostErrorKind::Database);
  others.Release(run + 1);
  EXPECT_EQ(host->journal().Begin(MakePlan()), run + 1);
}

TEST(Journal, AnEndedRunAndAReplacedOneAreNotOffered) {
  TempFolder folder;
  {
    const auto host = OpenHost(folder);
    host->journal().End(host->journal().Begin(MakePlan()), "ended");
  }
  {
    const auto host = OpenHost(folder);
    EXPECT_TRUE(host->journal().Interrupted().empty());
    host->journal().Begin(MakePlan());
  }
  const auto host = OpenHost(folder);
  ASSERT_EQ(host->journal().Interrupted().size(), 1u);
  TrayPlan other = MakePlan();
  other.archiveKey = "RVXCOM2:0";
  host->journal().End(host->journal().Begin(other), "ended");
  EXPECT_EQ(host->journal().Interrupted().size(), 1u) << "another instrument replaces nothing";
  const int64_t run = host->journal().Begin(MakePlan());
  EXPECT_TRUE(host->journal().Interrupted().empty());
  host->journal().End(run, "ended");
  EXPECT_TRUE(host->journal().Interrupted().empty());
}

// Notes that come too late or from an empty position change nothing.
TEST(Journal, NotesThatBelongToNoRunningPositionArePassedOver) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  TrayJournal& journal = host->journal();
  const int64_t run = journal.Begin(MakePlan());
  journal.NoteSampleStarted(run, 0);
  journal.NoteSampleStarted(run, 2);
  journal.NoteSampleStatus(run, 2);
  journal.NoteSampleFinished(run, 2);
  EXPECT_EQ(journal.FindOrigin(MakeSample(0)).position, 0);
  journal.NoteSampleFinished(run, 0);
  EXPECT_EQ(journal.FindOrigin(MakeSample(0)).run, 0);
  journal.End(run, "ended");
  journal.NoteSampleStarted(run, 0);
  journal.NoteSampleStatus(run, 0);
  journal.NoteSampleFinished(run, 0);
  EXPECT_EQ(journal.FindOrigin(MakeSample(0)).run, 0);
}

// A thread that has reported nothing stores a result: instrument and position tell to which run it
// belongs.
TEST(Journal, AResultOfAnotherThreadIsKnownByInstrumentAndPosition) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  const int64_t run = host->journal().Begin(MakePlan());
  platform::StartThread("run", [&] { host->journal().NoteSampleStarted(run, 1); })->Join();
  const SampleOrigin origin = host->journal().FindOrigin(MakeSample(1));
  EXPECT_EQ(origin.run, run);
  EXPECT_EQ(origin.position, 1);
  EXPECT_EQ(origin.attempt, 1);
  EXPECT_EQ(host->journal().FindOrigin(MakeSample(0)).run, 0);
  rvx::Sample other = MakeSample(1);
  other.serialNumber = "S2";
  EXPECT_EQ(host->journal().FindOrigin(other).run, 0);
  other = MakeSample(1);
  other.instrument = "RVX 2";
  EXPECT_EQ(host->journal().FindOrigin(other).run, 0);
}

// A run whose end could not be noted is offered again: better than to lose an interrupted one.
TEST(Journal, ARunWhoseEndCouldNotBeNotedIsOffered) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  const int64_t run = host->journal().Begin(MakePlan());
  ExecuteSql(host->database(), "PRAGMA query_only = ON");
  host->journal().End(run, "ended");
  ExecuteSql(host->database(), "PRAGMA query_only = OFF");
  const auto trays = host->journal().Interrupted();
  ASSERT_EQ(trays.size(), 1u);
  EXPECT_EQ(trays[0].run, run);
}

// The reading commands of other processes look at the folder while a tray runs.
TEST(Journal, ARunOfALivingProcessIsNotOfferedAndOneOfAKilledProcessIs) {
  TempFolder folder;
  int ready[2], end[2];
  ASSERT_EQ(pipe(ready), 0);
  ASSERT_EQ(pipe(end), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    // Uses the parts alone: a host would start a thread, which not every build allows after a fork.
    Database database(folder / "torvell.db");
    TrayJournal journal(database, folder / "trays.lock");
    SampleStore samples(database, journal, folder / "samples.spool");
    const int64_t run = journal.Begin(MakePlan());
    Measure(journal, samples, run, 0, 2);
    char byte = 'x';
    if (write(ready[1], &byte, 1) != 1 || read(end[0], &byte, 1) != 1) _exit(1);
    _exit(0);
  }
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  EXPECT_TRUE(OpenHost(folder)->journal().Interrupted().empty());
  kill(child, SIGKILL);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  const auto host = OpenHost(folder);
  const auto trays = host->journal().Interrupted();
  ASSERT_EQ(trays.size(), 1u);
  EXPECT_EQ(trays[0].positions[0].state, PositionState::Measured);
  EXPECT_EQ(host->samples().Count(), 2);
  for (int fd : {ready[0], ready[1], end[0], end[1]}) close(fd);
}

TEST(Journal, ASpooledResultCountsOnceItIsTakenIn) {
  TempFolder folder;
  {
    const auto host = OpenHost(folder);
    const int64_t run = host->journal().Begin(MakePlan());
    host->journal().NoteSampleStarted(run, 4);
    const SampleOrigin origin = host->journal().FindOrigin(MakeSample(4));
    EXPECT_EQ(origin.run, run);
    EXPECT_EQ(origin.position, 4);
    SampleSpool spool(folder / "samples.spool");
    ASSERT_EQ(spool.Append({MakeSample(4), origin.run, origin.position, origin.attempt}), "");
  }
  const auto tray = OpenHost(folder)->journal().InterruptedOf("RVXCOM1:0");
  ASSERT_TRUE(tray);
  EXPECT_EQ(tray->positions[2].state, PositionState::Measured);
}

// Two instruments with the same name and number run the same position: the thread tells to which
// run a result belongs.
TEST(Journal, TwoRunsAtOnceKeepTheirResultsApart) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  TrayPlan second = MakePlan();
  second.archiveKey = "RVXCOM2:0";
  const int64_t runs[] = {host->journal().Begin(MakePlan()), host->journal().Begin(second)};
  platform::Event bothStarted("both started", platform::Event::Mode::ManualReset);
  std::atomic<int> started{0};
  SampleOrigin origins[2];
  std::vector<std::shared_ptr<platform::Thread>> threads;
  for (int i : {0, 1}) {
    threads.push_back(platform::StartThread("run", [&, i] {
      host->journal().NoteSampleStarted(runs[i], 0);
      if (++started == 2) bothStarted.Set();
      bothStarted.Wait();
      origins[i] = host->journal().FindOrigin(MakeSample(0));
    }));
  }
  for (const auto& thread : threads) thread->Join();
  EXPECT_EQ(origins[0].run, runs[0]);
  EXPECT_EQ(origins[1].run, runs[1]);
  for (int64_t run : runs) host->journal().End(run, "ended");
  EXPECT_EQ(host->journal().FindOrigin(MakeSample(0)).run, 0);
}

}  // namespace
}  // namespace torvell
