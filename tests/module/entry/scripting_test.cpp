// What the scripting interface does with an instrument, and what it refuses.
#include <gtest/gtest.h>

#include "module/instrument/settings_change.h"
#include "module/scripting/scriptable_instrument.h"
#include "tests/module/entry/tray_fixture.h"

namespace rvx {
namespace {

using Kind = ScriptingProblem::Kind;
using Field = ScriptingProblem::Field;

struct ScriptingBench {
  ScriptingBench() : controller(host.ports.Add("COM1")) {
    instrument = std::make_unique<ScriptableInstrument>(
        "COM1", uint8_t{0}, controller.identification(), GetActionTable());
    EXPECT_TRUE(instrument->WaitForReadings(1, platform::Deadline::After(60s)));
  }
  std::string Value(const std::string& key) {
    for (const InstrumentSetting& setting : instrument->GetSettings()) {
      if (setting.key == key) return setting.value;
    }
    return "no such key";
  }

  FakeHost host;
  ScriptedController controller;
  std::unique_ptr<ScriptableInstrument> instrument;
};

TEST(ScriptingTest, SettingsAreTakenAllOrNoneAndStored) {
  RunVirtual([] {
    ScriptingBench bench;
    ScriptableInstrument& instrument = *bench.instrument;
    EXPECT_FALSE(instrument.SetSettings({{"injection-time", "30"}, {"check-standard", "on"}}));
    EXPECT_EQ(bench.Value("injection-time"), "30");
    EXPECT_NE(bench.host.instrumentArchive.GetText("RVXCOM1:0").find("\v30\t"), std::string::npos);
    for (const auto& [key, value] : std::vector<std::pair<std::string, std::string>>{
             {"injection-time", "256"}, {"serial-number", "1"}, {"nonsense", "1"}}) {
      const ScriptingResult problem =
          instrument.SetSettings({{"cool-down-time", "99"}, {key, value}});
      ASSERT_TRUE(problem) << key << "=" << value;
      EXPECT_EQ(problem->kind(), Kind::BadValue);
      EXPECT_EQ(problem->setting, key);
      EXPECT_EQ(bench.Value("cool-down-time"), "180");
    }
    bench.host.instrumentArchive.storeFailures.FailNext(2);
    const ScriptingResult failed = instrument.SetSettings({{"injection-time", "31"}});
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->kind(), Kind::Archive);
    EXPECT_EQ(bench.Value("injection-time"), "30");
    // A screen keeps what its user has confirmed, stored or not.
    const auto change = [&](Doubts doubts) {
      return ChangeSettings(instrument, {{"probe-a1", "0"}}, doubts, WhenNotStored::StayInForce);
    };
    EXPECT_EQ(change(Doubts::Refuse)->kind(), Kind::BadValue);
    EXPECT_EQ(change(Doubts::Confirmed)->kind(), Kind::Archive);
    EXPECT_EQ(bench.Value("probe-a1"), "0.000000");
  });
}

TEST(ScriptingTest, TheFolderMustExistOnlyIfFilesAreWrittenToIt) {
  RunVirtual([] {
    ScriptingBench bench;
    ScriptableInstrument& instrument = *bench.instrument;
    EXPECT_FALSE(instrument.SetSettings({{"save-csv", "off"}, {"save-location", "/no/folder"}}));
    const std::string elsewhere = instrument.SaveSettingsText();
    EXPECT_EQ(instrument.SetSettings({{"save-csv", "on"}})->setting, "save-location");
    EXPECT_FALSE(instrument.SetSettings({{"save-csv", "on"}, {"save-location", "/tmp"}}));
    EXPECT_EQ(instrument.SetSettings({{"save-location", "/no/folder"}})->setting, "save-location");
    EXPECT_FALSE(instrument.ImportSettings(elsewhere)) << "nothing is written there";
    EXPECT_EQ(bench.Value("save-location"), "/no/folder/");
  });
}

TEST(ScriptingTest, RightsAreCheckedWhereTheChangeIsMade) {
  RunVirtual([] {
    ScriptingBench bench;
    ScriptableInstrument& instrument = *bench.instrument;
    bench.host.security.SetUser("manager", 50);
    EXPECT_FALSE(instrument.SetSettings({{"injection-time", "30"}}));
    EXPECT_EQ(instrument.SetSettings({{"temperature-offset", "0.5"}})->kind(), Kind::NotAllowed);
    const std::string text = instrument.SaveSettingsText();
    bench.host.security.SetUser("service", 100);
    EXPECT_FALSE(instrument.SetSettings({{"temperature-offset", "0.5"}}));
    bench.host.security.SetUser("manager", 50);
    // Importing a text that would restore the old offset requires the same right.
    EXPECT_EQ(instrument.ImportSettings(text)->kind(), Kind::NotAllowed);
    EXPECT_EQ(bench.Value("temperature-offset"), "0.50");
    bench.host.security.SetUser("operator", 10);
    EXPECT_EQ(instrument.SetCellConstants(-20, 1, 2, 3)->kind(), Kind::NotAllowed);
    EXPECT_EQ(instrument.SetSettings({{"injection-time", "31"}})->kind(), Kind::NotAllowed);
    EXPECT_FALSE(instrument.SetSwitch(ServiceSwitch::Motor, true));
    EXPECT_FALSE(instrument.MayServe());
    bench.host.security.SetUser("", 0);
    EXPECT_EQ(instrument.MayServe()->kind(), Kind::NotAllowed);
    EXPECT_EQ(instrument.SetHomeFlag()->kind(), Kind::NotAllowed);
    EXPECT_EQ(instrument.AbortOperation()->kind(), Kind::NotAllowed);
    bench.host.security.SetUser("operator", 10);
    for (const uint32_t flags : {uint32_t{kTrayRunning}, uint32_t{kTrayRunning | kTrayPaused}}) {
      {
        ConfigurationGuard guard(instrument.configuration());
        instrument.configuration().fields.runFlags = flags;
      }
      std::vector<std::string> failures;
      for (const ScriptingResult& result :
           {instrument.MayServe(), instrument.SetHomeFlag(), instrument.SetTemperature({}),
            instrument.SetSwitch(ServiceSwitch::Motor, true),
            instrument.JogAxis(ServiceAxis::Tube, 0), instrument.RunSelfTest(failures)}) {
        ASSERT_TRUE(result);
        EXPECT_EQ(result->kind(), Kind::Busy);
      }
      EXPECT_FALSE(instrument.AbortOperation()) << "whoever wants it to stop does not wait";
    }
    ConfigurationGuard guard(instrument.configuration());
    instrument.configuration().fields.runFlags = 0;
  });
}

TEST(ScriptingTest, ConstantsAreRoundedDatedAndLimitedToTheTemperaturesInUse) {
  RunVirtual([] {
    ScriptingBench bench;
    ScriptableInstrument& instrument = *bench.instrument;
    EXPECT_FALSE(instrument.SetCellConstants(-20, 1234.6, -7.4, 0.4));
    const std::vector<CellConstants> constants = instrument.GetCellConstants();
    ASSERT_EQ(constants.size(), 8u);  // this instrument has no low temperature option
    EXPECT_EQ(constants[4].b0, 1235.0);
    EXPECT_EQ(constants[4].b1, -7.0);
    EXPECT_EQ(constants[4].date.fields().year, 2026);
    EXPECT_TRUE(constants[3].empty);
    EXPECT_EQ(instrument.SetCellConstants(-40, 1, 1, 1)->field, Field::Temperature);
    EXPECT_EQ(instrument.SetCellConstants(-21, 1, 1, 1)->kind(), Kind::BadValue);
  });
}

TEST(ScriptingTest, ImportRefusesWhatItCanNotTakeWhole) {
  RunVirtual([] {
    ScriptingBench bench;
    ScriptableInstrument& instrument = *bench.instrument;
    const std::string good = instrument.SaveSettingsText();
    std::string outOfRange = good;
    outOfRange.replace(outOfRange.find("240\t25\t"), 4, "999\t");
    for (const std::string& bad :
         {std::string(), std::string("RVX\nRVX\nshort\nTray 0\n"), "X" + good, outOfRange}) {
      const ScriptingResult problem = instrument.ImportSettings(bad);
      ASSERT_TRUE(problem);
      EXPECT_EQ(problem->kind(), Kind::BadValue);
      EXPECT_EQ(instrument.SaveSettingsText(), good);
    }
    std::string changed = good;
    changed.replace(changed.find("240\t25\t"), 4, "111\t");
    EXPECT_FALSE(instrument.ImportSettings(changed));
    EXPECT_EQ(bench.Value("injection-time"), "111");
  });
}

TEST(ScriptingTest, TestsOfASampleAreCheckedLikeInItsDialog) {
  RunVirtual([] {
    ScriptingBench bench;
    ScriptableInstrument& instrument = *bench.instrument;
    instrument.SetCellConstants(-20, 1, 2, 3);
    const std::unique_ptr<Action> measure(instrument.CreateActionByIndex(kMeasureViscAction));
    const std::unique_ptr<Action> verify(instrument.CreateActionByIndex(kCheckViscAction));
    SampleTests good;
    good.tests = {{-20.0, 45, {}}, {-20.0, {}, {}}};
    good.injectionTime = 10;
    EXPECT_FALSE(instrument.SetSampleTests(*measure, good));
    const SampleTests back = *instrument.GetSampleTests(*measure);
    ASSERT_EQ(back.tests.size(), 2u);
    EXPECT_EQ(back.tests[0].rotorOnTime, 45);
    EXPECT_EQ(back.tests[1].rotorOnTime, 60);
    EXPECT_EQ(back.injectionTime, 10);
    EXPECT_EQ(measure->IsConfigured(), 1);

    const auto problemOf = [&](Action& action, std::vector<SampleTest> tests) {
      SampleTests wrong;
      wrong.tests = std::move(tests);
      const ScriptingResult problem = instrument.SetSampleTests(action, wrong);
      return problem ? std::optional(problem->field) : std::nullopt;
    };
    EXPECT_EQ(problemOf(*measure, {{-30.0, {}, {}}}), Field::Temperature);  // no constants
    EXPECT_EQ(problemOf(*measure, {{5.0, {}, {}}}), Field::Temperature);
    EXPECT_EQ(problemOf(*measure, {{-20.0, 29, {}}}), Field::RotorOnTime);
    EXPECT_EQ(problemOf(*measure, {{-20.0, {}, 2000.0}}), Field::KnownViscosity);
    EXPECT_EQ(problemOf(*measure, std::vector<SampleTest>(21, {-20.0, {}, {}})),
              Field::Temperature);
    EXPECT_EQ(problemOf(*measure, {}), Field::Temperature);
    EXPECT_EQ(problemOf(*verify, {{-30.0, {}, {}}}), Field::KnownViscosity);
    EXPECT_EQ(problemOf(*verify, {{-30.0, {}, 999.0}}), Field::KnownViscosity);
    EXPECT_EQ(problemOf(*verify, {{-30.0, {}, 3000.0}}), std::nullopt);

    bench.host.analysis.WriteAnalysisText("Standards.RVX Oil Standards", "RVX Standards",
                                          "CL20\v-20\v4321.5\vL1\v\r");
    instrument.ReloadStandards();
    verify->SetSampleId("CL20");
    EXPECT_EQ(problemOf(*verify, {{-20.0, {}, {}}}), std::nullopt);
    EXPECT_EQ(instrument.GetSampleTests(*verify)->tests[0].knownViscosity, 4321.5);
    EXPECT_EQ(problemOf(*verify, {{-20.0, {}, 4000.0}}), Field::KnownViscosity);

    bench.host.security.SetUser("operator", 10);
    EXPECT_EQ(problemOf(*measure, {{-20.0, {}, {}}}), std::nullopt);
    EXPECT_EQ(problemOf(*measure, {{-20.0, 61, {}}}), Field::None);  // times require a manager
  });
}

TEST(ScriptingTest, ServiceCommandsSayWhatTheInstrumentAnswered) {
  RunVirtual([] {
    ScriptingBench bench;
    ScriptableInstrument& instrument = *bench.instrument;
    EXPECT_FALSE(instrument.SetHomeFlag());
    EXPECT_FALSE(instrument.SetTemperature(-15.0));
    EXPECT_EQ(instrument.SetTemperature(300.0)->kind(), Kind::BadValue);
    EXPECT_EQ(instrument.JogAxis(ServiceAxis::Tube, 943)->kind(), Kind::BadValue);
    EXPECT_FALSE(instrument.JogAxis(ServiceAxis::Trolley, 405));
    bench.controller.Refuse("AV", 0x83, 1);
    const ScriptingResult refused = instrument.SetSwitch(ServiceSwitch::Cooling, true);
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->kind(), Kind::Refused);
    EXPECT_NE(refused->found.find("Thermoelectrics may not be"), std::string::npos);
    EXPECT_TRUE(bench.host.instruments.errors().empty());  // reported to the caller only
    bench.controller.Refuse("AV", 0x80, -1);
    EXPECT_EQ(instrument.SetSwitch(ServiceSwitch::Cooling, true)->kind(), Kind::Refused);
    bench.controller.SetSilent(true);
    EXPECT_EQ(instrument.AbortOperation()->kind(), Kind::NoAnswer);
  });
}

}  // namespace
}  // namespace rvx
