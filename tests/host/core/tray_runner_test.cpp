// A tray run as the host's programs see it.
#include "host/core/tray_runner.h"

#include <gtest/gtest.h>

#include "platform/time_base.h"
#include "tests/host/core/fake_instrument.h"
#include "tests/host/core/temp_folder.h"

namespace torvell {
namespace {

class Recorder : public TrayListener {
 public:
  void TrayStarted() override { events += "started "; }
  void SampleStarted(int32_t position) override { events += "+" + std::to_string(position) + " "; }
  void SampleStatus(int32_t, const std::string& text) override { events += text + " "; }
  void SampleStored(int32_t position, const StoredSample&) override {
    events += "stored" + std::to_string(position) + " ";
  }
  void SampleFinished(int32_t position) override { events += "-" + std::to_string(position) + " "; }
  void PauseChanged(bool paused) override { events += paused ? "pause " : "resume "; }
  void ErrorReported(const ErrorReport& report) override { events += "!" + report.message + " "; }
  void TrayFinished() override { events += "finished"; }

  std::string events;
};

void Report(rvx::ViscometerInstrument* source, const std::string& message) {
  rvx::ActionErrorRecord record;
  record.source = source;
  record.message = message;
  record.instrumentId = "RVX";
  rvx::ActionException error(record);
  GetInstrumentManager()->ReportError(&error);
}

class TrayRunnerTest : public testing::Test {
 protected:
  TempFolder folder_;
  Recorder recorder_;
};

TEST_F(TrayRunnerTest, TellsOfTheRunAndOfNothingElse) {
  const auto host = OpenHost(folder_);
  FakeInstrument& instrument = Adopt(*host);
  FakeInstrument& other = Adopt(*host, "COM2");
  instrument.Fill("a", 1);
  instrument.LeaveEmpty();
  instrument.Fill("b", 2);
  const auto runner = host->StartTray(host->instruments().Entries()[0], &recorder_);
  rvx::TrayWatcher& run = *instrument.watcher;
  EXPECT_FALSE(runner->HasFinished());
  run.TrayStarted(0);
  run.SampleStarted(0, 0);
  run.SampleStatus(0, 0, "Cooldown");
  GetSampleArchive()->StoreSample(instrument.MakeSample(0));
  run.SampleFinished(0, 0);
  // A sample that is stored between two positions does not belong to the run.
  GetSampleArchive()->StoreSample(other.MakeSample(0));
  Report(&instrument, "mine");
  Report(&other, "not mine");
  run.TrayPauseChanged(0, 1);
  run.TrayPauseChanged(0, 0);
  EXPECT_TRUE(runner->Abort());
  Report(&instrument, "late");
  EXPECT_EQ(recorder_.events, "started +0 Cooldown stored0 -0 !mine pause resume finished");
  EXPECT_TRUE(runner->finished().Wait(platform::Milliseconds(0)));
  EXPECT_TRUE(runner->HasFinished());
  EXPECT_TRUE(host->journal().Interrupted().empty());
  EXPECT_EQ(host->errors().Last(3)[0].source, "COM1 RVX");
}

TEST_F(TrayRunnerTest, ARunThatDoesNotStartLeavesNothing) {
  const auto host = OpenHost(folder_);
  FakeInstrument& instrument = Adopt(*host);
  instrument.Fill("a", 1);
  instrument.startFailure = "RVX cell is too warm.";
  try {
    host->StartTray(host->instruments().Entries()[0], &recorder_);
    FAIL();
  } catch (const HostError& error) {
    EXPECT_EQ(error.kind(), HostErrorKind::Tray);
    EXPECT_EQ(std::string(error.what()), "RVX cell is too warm.");
  }
  EXPECT_EQ(recorder_.events, "");
  EXPECT_TRUE(host->journal().Interrupted().empty());
}

TEST_F(TrayRunnerTest, ATrayWantsAnOperator) {
  {
    const auto host = OpenHost(folder_);
    host->users().Add("anna", 100, "a");
  }
  const auto host = OpenHost(folder_);
  FakeInstrument& instrument = Adopt(*host);
  instrument.Fill("a", 1);
  EXPECT_EQ(KindRaisedBy([&] { host->StartTray(host->instruments().Entries()[0], &recorder_); }),
            HostErrorKind::NotAllowed);
  EXPECT_EQ(instrument.watcher, nullptr);
}

// The whole tray is in the settings text while it runs, so that it can be offered again.
TEST_F(TrayRunnerTest, TheTrayIsStoredAtItsStart) {
  const auto host = OpenHost(folder_);
  FakeInstrument& instrument = Adopt(*host);
  instrument.Fill("oil 7", 1);
  const auto runner = host->StartTray(host->instruments().Entries()[0], nullptr);
  EXPECT_NE(host->instrumentTexts().Read("RVXCOM1:0")->find("oil 7"), std::string::npos);
  runner->Abort();
}

TEST_F(TrayRunnerTest, ARefusedResultIsReportedByPositionAndInstrument) {
  const auto host = OpenHost(folder_);
  FakeInstrument& instrument = Adopt(*host);
  instrument.Fill("a", 1);
  const auto runner = host->StartTray(host->instruments().Entries()[0], &recorder_);
  instrument.watcher->SampleStarted(0, 0);
  const rvx::Sample sample = instrument.MakeSample(0);
  GetSampleArchive()->StoreSample(sample);
  try {
    GetSampleArchive()->StoreSample(sample);
    FAIL();
  } catch (rvx::ArchiveException* raised) {
    EXPECT_EQ(raised->GetRecord().source, &instrument);
    EXPECT_EQ(raised->GetRecord().position, 1);
    EXPECT_EQ(raised->GetRecord().sampleFailure, 1);
    delete raised;
  }
  runner->Abort();
}

// The program's thread waits for the run while the module's thread reports.
TEST_F(TrayRunnerTest, UnderVirtualTimeARunIsWaitedFor) {
  platform::TimeBaseOptions options;
  options.kind = platform::TimeBaseKind::Virtual;
  options.startOfClock = platform::Date(2026, 1, 5, 8, 0, 0);
  const int result = platform::RunUnderTimeBase(options, [&] {
    const auto host = OpenHost(folder_);
    FakeInstrument& instrument = Adopt(*host);
    instrument.Fill("a", 3);
    const auto runner = host->StartTray(host->instruments().Entries()[0], &recorder_);
    const auto thread = platform::StartThread("tray", [&] {
      instrument.watcher->TrayStarted(0);
      instrument.watcher->SampleStarted(0, 0);
      for (int i = 0; i < 3; ++i) {
        platform::Sleep(platform::Milliseconds(3600 * 1000));
        GetSampleArchive()->StoreSample(instrument.MakeSample(0));
      }
      instrument.watcher->SampleFinished(0, 0);
      instrument.active = false;
      instrument.watcher->TrayFinished(0);
    });
    const bool finished = runner->finished().Wait(platform::Milliseconds(4 * 3600 * 1000));
    thread->Join();
    return finished ? 0 : 1;
  });
  EXPECT_EQ(result, 0);
  EXPECT_EQ(recorder_.events, "started +0 stored0 stored0 stored0 -0 finished");
  EXPECT_EQ(OpenHost(folder_)->samples().Last(1)[0].timestamp,
            platform::Date(2026, 1, 5, 11, 0, 0));
}

}  // namespace
}  // namespace torvell
