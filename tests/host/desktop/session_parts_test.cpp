// The parts of an instrument's session without a window, an instrument or an event loop.
#include <gtest/gtest.h>

#include <deque>

#include "boundary/instrument_limits.h"
#include "host/core/host_error.h"
#include "host/desktop/closing_question.h"
#include "host/desktop/instrument_state.h"
#include "host/desktop/latest_readings.h"
#include "host/desktop/tray_editor.h"

namespace torvell {
namespace {

using Kind = RunEvent::Kind;
using platform::Milliseconds;

// Keeps jobs until the test runs them.
class HeldJobs : public JobRunner {
 public:
  void Do(std::function<void()> job, std::function<void()> done,
          std::function<void(const QString&)> failed) override {
    held_.push_back([=] {
      try {
        job();
      } catch (const HostError& error) {
        return failed(error.what());
      }
      if (done) done();
    });
  }
  void RunOne() {
    const auto job = held_.front();
    held_.pop_front();
    job();
  }
  void RunAll() {
    while (!held_.empty()) RunOne();
  }

 private:
  std::deque<std::function<void()>> held_;
};

// Plays the instrument: a tray of four positions, and its run.
class FakeInstrument : public TrayStore, public RunDriver {
 public:
  TraySnapshot Read() override {
    ++readings;
    return {4, {}, cells};
  }
  TrayEdit Apply(const TrayEdit& edit) override {
    Obey();
    TrayEdit before;
    for (const auto& [at, cell] : edit)
      before[at] = std::exchange(cells.at(static_cast<size_t>(at)), cell);
    return before;
  }
  TrayEdit Load(const std::string&) override { return {}; }
  std::vector<std::string> KeepRest() override { return {}; }
  void DropInterrupted() override {}
  std::shared_ptr<rvx::Action> MakeSample(int) override { return nullptr; }
  std::shared_ptr<rvx::Action> MakeCopy(const TrayCell&) override { return nullptr; }

  std::vector<TrayPosition> Start() override {
    Obey();
    ++starts;
    running = true;
    std::vector<TrayPosition> plan(1);
    plan[0].tests.emplace().tests.resize(2);
    return plan;
  }
  void PauseAfterSample() override { Obey(); }
  void PauseNow() override { Obey(); }
  void Resume() override { Obey(); }
  bool Abort() override { return !std::exchange(refuses, false) && std::exchange(running, false); }
  void Release() override {}
  std::vector<RunEvent> TakeEvents() override { return std::exchange(events, {}); }

  std::vector<TrayCell> cells = std::vector<TrayCell>(4);
  std::vector<RunEvent> events;
  bool refuses = false;  // refuses the next command
  bool running = false;
  int readings = 0;
  int starts = 0;

 private:
  void Obey() {
    if (std::exchange(refuses, false)) throw HostError(HostErrorKind::Tray, "refused");
  }
};

class SessionPartsTest : public testing::Test {
 protected:
  SessionPartsTest() {
    QObject::connect(&jobs_, &TrayJobs::Failed, [this](const QString& text) { failed_ = text; });
    QObject::connect(&run_, &RunControl::Began, &editor_, &TrayEditor::ForgetUndo);
    jobs_.Read();
    held_.RunAll();
  }

  // Puts a sample into the first empty position of the tray that it is made from.
  void Add(const char* sampleId) {
    editor_.Change([sampleId](const std::vector<TrayCell>& tray) {
      const auto empty = std::find(tray.begin(), tray.end(), TrayCell());
      return TrayEdit{{static_cast<int>(empty - tray.begin()), {"key", sampleId, ""}}};
    });
  }
  std::string Ids() const {
    std::string ids;
    for (const TrayCell& cell : instrument_.cells) ids += cell.empty() ? "-" : cell.sampleId;
    return ids;
  }
  // The phase that an event of the run leads to.
  RunPhase After(Kind kind, bool paused = false) {
    RunEvent event;
    event.kind = kind;
    event.position = 0;
    event.paused = paused;
    if (kind == Kind::Sample) event.sample.emplace();
    instrument_.events = {event};
    run_.TakeEvents();
    return run_.phase();
  }
  // Runs all waiting jobs; returns the phase after them.
  RunPhase AfterJobs() {
    held_.RunAll();
    return run_.phase();
  }

  HeldJobs held_;
  FakeInstrument instrument_;
  TrayJobs jobs_{held_, instrument_};
  RunControl run_{InstrumentEntry(), jobs_, instrument_};
  TrayEditor editor_{jobs_, instrument_, run_};
  QString failed_;
};

TEST_F(SessionPartsTest, EditsAreMadeFromTheTrayThatThoseBeforeLeave) {
  for (const char* id : {"A", "B", "C"}) Add(id);
  held_.RunAll();
  EXPECT_EQ(Ids(), "ABC-");
  for (int i = 0; i < 2; ++i) editor_.Undo();
  held_.RunAll();
  EXPECT_EQ(Ids(), "A---");
  // The tray is changed elsewhere while it is being read: the edit waits for one more reading.
  const int readings = instrument_.readings;
  for (int i = 0; i < 3; ++i) jobs_.Read();
  Add("Z");
  held_.RunOne();
  instrument_.cells[1] = {"key", "X", ""};
  held_.RunAll();
  EXPECT_EQ(Ids(), "AXZ-");
  EXPECT_EQ(instrument_.readings, readings + 3) << "two before the edit and one after it";
}

TEST_F(SessionPartsTest, AnEditThatIsRefusedIsToldAndCannotBeUndone) {
  instrument_.refuses = true;
  Add("A");
  Add("B");
  held_.RunAll();
  EXPECT_EQ(failed_, "refused");
  EXPECT_EQ(Ids(), "B---");
  for (int i = 0; i < 2; ++i) editor_.Undo();
  held_.RunAll();
  EXPECT_EQ(Ids(), "----");
}

TEST_F(SessionPartsTest, AStartWaitsForTheEditsBeforeItAndDropsThoseAfterIt) {
  for (const bool refused : {true, false}) {
    Add("A");
    run_.Start();
    Add("B");
    EXPECT_EQ(run_.phase(), RunPhase::StartWaiting);
    for (int i = 0; i < 2; ++i) held_.RunOne();  // the edit, and the reading after it
    EXPECT_EQ(run_.phase(), RunPhase::Starting);
    instrument_.refuses = refused;
    EXPECT_EQ(AfterJobs(), refused ? RunPhase::Idle : RunPhase::Running);
    EXPECT_EQ(Ids(), refused ? "AB--" : "ABA-");
    EXPECT_EQ(editor_.CanUndo(), refused);
  }
  run_.Start();
  held_.RunAll();
  EXPECT_EQ(instrument_.starts, 1);
}

TEST_F(SessionPartsTest, ClosingPutsInTheEditsThatWaitAndStartsNothing) {
  Add("A");
  Add("B");
  run_.Start();
  jobs_.Close();
  bool ended = false;
  run_.End([&] { jobs_.AfterWaiting([&ended] { ended = true; }); });
  Add("C");  // too late
  EXPECT_EQ(AfterJobs(), RunPhase::Idle);
  EXPECT_TRUE(ended);
  EXPECT_EQ(Ids(), "AB--");
  EXPECT_EQ(instrument_.starts, 0);
}

TEST_F(SessionPartsTest, ClosingAbortsWhatAStartOnItsWaySetsGoing) {
  run_.Start();
  jobs_.Close();
  run_.End({});
  EXPECT_EQ(AfterJobs(), RunPhase::Running);
  EXPECT_TRUE(instrument_.starts == 1 && !instrument_.running);
}

TEST_F(SessionPartsTest, APauseIsRequestedUntilTheInstrumentPauses) {
  run_.Start();
  held_.RunAll();
  run_.PauseAfterSample();
  EXPECT_EQ(run_.phase(), RunPhase::PauseRequested);
  instrument_.refuses = true;
  EXPECT_EQ(AfterJobs(), RunPhase::Running);
  run_.PauseNow();
  EXPECT_EQ(After(Kind::PauseChanged, true), RunPhase::Paused);
  run_.Resume();
  EXPECT_EQ(AfterJobs(), RunPhase::Paused) << "until the instrument goes on";
  // A refused abort leaves the run as it is.
  instrument_.refuses = true;
  run_.Abort();
  EXPECT_EQ(AfterJobs(), RunPhase::Paused);
  EXPECT_EQ(After(Kind::PauseChanged, false), RunPhase::Running);
  EXPECT_EQ(After(Kind::TrayFinished), RunPhase::Ended);
  EXPECT_FALSE(run_.summary()->aborted);
}

TEST_F(SessionPartsTest, ResultsStayUntilTheyAreAcknowledged) {
  for (const int results : {1, 2}) {
    run_.Start();
    held_.RunAll();
    for (int i = 0; i < results; ++i) After(Kind::Sample);
    run_.Abort();
    EXPECT_EQ(After(Kind::TrayFinished), RunPhase::Ended);
    EXPECT_EQ(run_.summary()->aborted, results < 2) << "after the last result nothing is aborted";
    run_.Start();
    Add("A");
    EXPECT_EQ(AfterJobs(), RunPhase::Ended);
    EXPECT_EQ(Ids(), "----");
    run_.Acknowledge();
    EXPECT_EQ(AfterJobs(), RunPhase::Idle);
  }
}

TEST(LatestReadingsTest, TheirAgeIsCountedToTheLastLook) {
  LatestReadings latest;
  EXPECT_TRUE(latest.Take({}, Milliseconds(1))) << "none has come: old from the start";
  EXPECT_TRUE(latest.Take({{Milliseconds(100), {}}}, Milliseconds(150)));
  EXPECT_FALSE(latest.Take({}, Milliseconds(250)));
  EXPECT_EQ(latest.Silence(), Milliseconds(150));
  EXPECT_TRUE(latest.Take({}, rvx::kStaleAfter + Milliseconds(100)));
}

TEST(ClosingQuestionTest, EachObstacleIsListed) {
  EXPECT_FALSE(AskBeforeClosing({}, {}));
  EXPECT_EQ(AskBeforeClosing({{"one", "x"}}, {})->closeAnyway, "Abort and Close");
  EXPECT_EQ(AskBeforeClosing({{"one", "x"}}, {{"screen", "y"}})->details, "one: x\nscreen: y");
}

}  // namespace
}  // namespace torvell
