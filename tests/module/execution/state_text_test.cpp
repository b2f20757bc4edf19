// The stored form of sample actions, and how a stored action finds its standard again.
#include <rapidcheck.h>

#include "boundary/standards_text.h"
#include "module/execution/check_visc_action.h"
#include "module/execution/measure_visc_action.h"
#include "module/execution/visc_state_text.h"
#include "tests/module/execution/bench.h"

namespace rvx {
namespace {

TEST(StateTextTest, ASampleActionComesBack) {
  InVirtualTime([] {
    Bench bench;
    const auto action = bench.Make<CCheckViscAction>(kCheckViscAction);
    action->SetSampleId("CL 7");
    action->SetTestPoint(0, "- 5", "1234.5", 45);
    action->SetTestPoint(1, "-20", " 4000.25", 60);
    action->SetTestPoint(2, "-30.5", "9", -1);
    action->SetTestPoint(20, "-5", "1", 1);  // beyond the last
    action->SetTestPoint(-1, "-5", "1", 1);
    const std::string text = action->GetStateText();
    const std::string begin = "CL 7\v1\v1234.500000000000000\v4000.250000000000000\v9.0000";
    EXPECT_EQ(text.substr(0, begin.size()), begin);
    EXPECT_EQ(text.back(), '\v');
    EXPECT_EQ(text.find('\n'), std::string::npos);

    const auto copy = bench.Make<CMeasureViscAction>(kMeasureViscAction);
    copy->SetStateText(text);
    EXPECT_EQ(copy->GetStateText(), text);
    EXPECT_EQ(copy->IsConfigured(), 1);
    EXPECT_EQ(copy->CopyTestRecord().testCount, 3);
    EXPECT_EQ(copy->CopyTestRecord().testTemperatures[2], -30.5);
    EXPECT_EQ(copy->CopyTestRecord().rotorOnTimes[1], 60);
  });
}

TEST(StateTextTest, AnActionThatIsNotConfiguredWritesTheInstrumentsTests) {
  InVirtualTime([] {
    Bench bench;
    bench.SetTimes(7, 8, 9);
    const auto action = bench.Make<CMeasureViscAction>(kMeasureViscAction);
    const std::string text = action->GetStateText();
    EXPECT_EQ(text.substr(0, 22), "\v0\v0.000000000000000\v0");
    EXPECT_EQ(action->CopyTestRecord().injectionTime, 7);
  });
}

TEST(StateTextTest, ShortTextsTakeWhatTheyHave) {
  InVirtualTime([] {
    Bench bench;
    const auto action = bench.Make<CMeasureViscAction>(kMeasureViscAction);
    action->SetSampleId("before");
    action->SetTestPoint(0, "-20", "7", 33);
    const std::string before = action->GetStateText();
    for (const char* text : {"", "x", "x\v1\v2", "x\v1\v2\v"}) {
      action->SetStateText(text);
      EXPECT_EQ(action->GetStateText(), before) << text;
    }
    action->SetStateText("after\v1\v5.5\vno number\v");
    EXPECT_EQ(action->GetSampleId(), "after");
    EXPECT_EQ(action->CopyKnownViscosities()[0], 5.5);
    EXPECT_EQ(action->CopyKnownViscosities()[1], 0.0);
    EXPECT_EQ(action->CopyTestRecord().rotorOnTimes[0], 33);
  });
}

TEST(StateTextTest, SampleNamesCannotBreakTheText) {
  InVirtualTime([] {
    FakeHost host;
    SampleActionState state;
    state.sampleId = "two\nlines\vand\ra field";
    SampleActionState back;
    ASSERT_TRUE(ReadSampleActionState(WriteSampleActionState(state), back));
    EXPECT_EQ(back.sampleId, "two lines and a field");
  });
}

TEST(StateTextTest, DamagedTextsDoNoHarm) {
  InVirtualTime([] {
    FakeHost host;
    EXPECT_TRUE(rc::check("any text is read or refused", [](const std::string& text) {
      SampleActionState state;
      state.sampleId = "kept";
      if (!ReadSampleActionState(text, state)) RC_ASSERT(state.sampleId == "kept");
      SampleActionState back;
      RC_ASSERT(ReadSampleActionState(WriteSampleActionState(state), back));
      RC_ASSERT(back.configured == state.configured);
    }));
  });
}

TEST(StateTextTest, ARunningActionRefusesAText) {
  InVirtualTime([] {
    Bench bench;
    const auto action = bench.Make<CMeasureViscAction>(kMeasureViscAction);
    const std::string text = action->GetStateText();
    RecordingWatcher watcher;
    action->Start(&watcher, "0,0");
    try {
      action->SetStateText(text);
      ADD_FAILURE() << "taken";
    } catch (ActionException* raised) {
      EXPECT_EQ(raised->GetRecord().message, "'RVX Measure Viscosity Action' is running.");
      EXPECT_EQ(raised->GetRecord().sampleFailure, 1);
      delete raised;
    }
    action->Stop();
  });
}

// --- Standards ----------------------------------------------------------------------------------

TEST(StandardsTest, AStoredActionTakesUpTheStandardsPresentValues) {
  InVirtualTime([] {
    Bench bench;
    bench.host.analysis.WriteAnalysisText(kStandardsArchiveName, kStandardsSection,
                                          "CL 7\v- 5\v1700.5\vlot\v\rCL 7\v-20\v4100\vlot\v\r");
    bench.instrument->ReloadStandards();
    const auto action = bench.Make<CCheckViscAction>(kCheckViscAction);
    action->SetSampleId("CL 7");
    action->SetTestPoint(0, "-20", "1", 60);
    action->SetTestPoint(1, "- 5", "2", 60);
    action->SetTestPoint(2, "-25", "3", 60);  // the standard has no value there
    const auto copy = bench.Make<CCheckViscAction>(kCheckViscAction);
    copy->SetStateText(action->GetStateText());
    EXPECT_EQ(copy->CopyKnownViscosities()[0], 4100.0);
    EXPECT_EQ(copy->CopyKnownViscosities()[1], 1700.5);
    EXPECT_EQ(copy->CopyKnownViscosities()[2], 3.0);
    EXPECT_EQ(copy->CopyKnownViscosities()[3], 1.0);

    action->SetSampleId("an oil");
    copy->SetStateText(action->GetStateText());
    EXPECT_EQ(copy->CopyKnownViscosities()[0], 1.0);
  });
}

}  // namespace
}  // namespace rvx
