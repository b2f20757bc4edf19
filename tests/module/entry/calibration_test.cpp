// Calibrations through the scripting interface: what is fitted and stored, the required rights, and
// the tray of standards.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "boundary/sample_constants.h"
#include "boundary/standards_text.h"
#include "module/calibration/standards_map.h"
#include "module/instrument/save_cell_constants.h"
#include "module/instrument/simulated_oils.h"
#include "module/scripting/scriptable_instrument.h"
#include "tests/module/entry/tray_fixture.h"

namespace rvx {
namespace {

using Kind = ScriptingProblem::Kind;
using Field = ScriptingProblem::Field;

class CalibrationBench {
 public:
  CalibrationBench() : controller(host.ports.Add("COM1")) {
    std::string pattern = (std::filesystem::temp_directory_path() / "calibration_XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    host.archiveManager.SetDefaultName(folder_ + "/");
    instrument = std::make_unique<ScriptableInstrument>(
        "COM1", uint8_t{0}, controller.identification(), GetActionTable());
    EXPECT_TRUE(instrument->WaitForReadings(1, platform::Deadline::After(60s)));
  }
  ~CalibrationBench() {
    instrument.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  // Runs on viscosity = 1000 / speed - 300 + 40 * speed.
  void StoreRuns(const std::vector<double>& speeds) {
    for (const double speed : speeds) {
      Sample sample;
      sample.sampleId = platform::FormatText("oil %g", speed);
      sample.speed = speed;
      sample.constants[kConstantKnownViscosity] = 1000.0 / speed - 300.0 + 40.0 * speed;
      host.samples.StoreSample(sample);
    }
  }

  // `count` standards at each of the temperatures, the groups in turns.
  void StoreStandards(int count, const std::vector<std::string>& temperatures) {
    std::string text;
    std::ofstream groups(folder_ + "/StandardGroups.txt");
    groups << "name,temperature,group\n";
    for (const std::string& temperature : temperatures) {
      for (int i = 0; i < count; ++i) {
        const std::string name = platform::FormatText("S%02d", i);
        text += MakeStandardRow(name, temperature, "3000", "L" + temperature);
        groups << name << "," << temperature << ","
               << "ABC"[i % 3] << "\n";
      }
    }
    host.analysis.WriteAnalysisText(kStandardsArchiveName, kStandardsSection, text);
    instrument->ReloadStandards();
  }

  std::vector<std::string> TrayIds() {
    std::vector<std::string> ids;
    TrayGuard guard(*instrument->GetTray(0));
    for (int32_t i = 0; i < instrument->GetTray(0)->GetSize(); ++i) {
      Action& action = *instrument->GetTray(0)->GetAt(i);
      if (action.GetClassName() != kNullActionClassKey) ids.push_back(action.GetSampleId());
    }
    return ids;
  }

  FakeHost host;
  TestPrompter prompter;
  ScriptedController controller;
  std::unique_ptr<ScriptableInstrument> instrument;

 private:
  std::string folder_;
};

TEST(CalibrationTest, FitsTheRunsThatTakePartAndJudgesAll) {
  RunVirtual([] {
    CalibrationBench bench;
    bench.StoreRuns({0.05, 0.1, 0.2, 0.4});
    CalibrationQuestion question;
    question.temperature = -20.0;
    question.takesPart = [](const Sample& sample) { return sample.sampleId != "oil 0.2"; };
    CalibrationSummary summary;
    ASSERT_FALSE(bench.instrument->FitCalibration(question, summary));
    EXPECT_NE(bench.host.samples.lastQuery().find("> -20.051)"), std::string::npos);
    ASSERT_TRUE(summary.fit);
    EXPECT_NEAR(summary.fit->b0, 1000.0, 1e-6);
    EXPECT_EQ(summary.fit->b1Text, "-300");
    EXPECT_EQ(summary.usedCount, 3);
    EXPECT_FALSE(summary.lastCalibration);
    EXPECT_FALSE(summary.runs[2].used);
    EXPECT_NEAR(*summary.runs[2].recalculated, 4708.0, 1e-9);
    EXPECT_NEAR(*summary.largestPercentDiff, 0.0, 1e-9);
    EXPECT_FALSE(summary.hasTooFewSpeeds);
    EXPECT_EQ(summary.targetText, "-20");
    question.takesPart = [](const Sample& sample) { return sample.speed < 0.15; };
    ASSERT_FALSE(bench.instrument->FitCalibration(question, summary));
    EXPECT_FALSE(summary.fit);
    EXPECT_FALSE(summary.runs[0].recalculated);
    EXPECT_TRUE(summary.hasTooFewSpeeds);
    question.hours = 367;
    EXPECT_EQ(bench.instrument->FitCalibration(question, summary)->field, Field::Hours);
    question = {};
    question.temperature = -40.0;  // not without the low temperature option
    EXPECT_EQ(bench.instrument->FitCalibration(question, summary)->field, Field::Temperature);
    question.temperature = -20.0;
    bench.host.samples.queryFailures.FailNext(1);
    EXPECT_EQ(bench.instrument->FitCalibration(question, summary)->kind(), Kind::Archive);
  });
}

TEST(CalibrationTest, SavesOneTemperatureOrAllThatAreOffered) {
  RunVirtual([] {
    CalibrationBench bench;
    ScriptableInstrument& instrument = *bench.instrument;
    EXPECT_FALSE(instrument.SaveCalibration(-20.0, "1000", "-300", "40"));
    std::vector<CellConstants> constants = instrument.GetCellConstants();
    EXPECT_EQ(constants[4].b2, 40.0);
    EXPECT_EQ(constants[4].date.fields().year, 2026);
    EXPECT_TRUE(constants[3].empty);
    EXPECT_NE(bench.host.instrumentArchive.GetText("RVXCOM1:0").find("-300"), std::string::npos);
    EXPECT_FALSE(instrument.SaveCalibration({}, "1200.5", "0", "0"));
    for (const CellConstants& slot : instrument.GetCellConstants()) EXPECT_EQ(slot.b0, 1200.5);
    {
      ConfigurationGuard guard(instrument.configuration());
      EXPECT_EQ(instrument.configuration().fields.b0[8], 0.0) << "the ninth is not offered";
    }
    EXPECT_FALSE(instrument.SaveCalibration(-20.0, "0", "-0", "0.0"));
    EXPECT_EQ(instrument.GetCellConstants()[4].date, NeverCalibrated());
    EXPECT_EQ(instrument.SaveCalibration(-20.0, "1e999", "0", "0")->kind(), Kind::BadValue);
    EXPECT_EQ(instrument.SaveCalibration(-20.0, "", "0", "0")->kind(), Kind::BadValue);
  });
}

TEST(CalibrationTest, RightsAreCheckedWhereTheChangeIsMade) {
  RunVirtual([] {
    CalibrationBench bench;
    CalibrationSummary summary;
    bench.host.security.SetUser("manager", 50);
    EXPECT_EQ(bench.instrument->SaveCalibration({}, "1", "1", "1")->kind(), Kind::NotAllowed);
    EXPECT_EQ(bench.instrument->FitCalibration({}, summary)->kind(), Kind::NotAllowed);
    bench.host.security.SetUser("operator", 10);
    EXPECT_FALSE(bench.instrument->SaveCalibration(-20.0, "1", "1", "1"));
    const platform::Date now = platform::LocalNow();
    EXPECT_NE(SaveCellConstants(*bench.instrument, std::nullopt, 4, {}, now).refusal, "");
    bench.host.security.SetUser("", 9);
    EXPECT_EQ(bench.instrument->SaveCalibration(-20.0, "2", "2", "2")->kind(), Kind::NotAllowed);
    EXPECT_NE(SaveCellConstants(*bench.instrument, 4, 4, {}, now).refusal, "");
    EXPECT_EQ(bench.instrument->GetCellConstants()[4].b0, 1.0);
    EXPECT_EQ(bench.instrument->MakeCalibrationTray({{-20.0}, {}})->kind(), Kind::NotAllowed);
  });
}

TEST(CalibrationTest, WhenTheArchiveRefusesTheOldDateComesBack) {
  RunVirtual([] {
    CalibrationBench bench;
    CalibrationTexts texts;
    texts.b0 = "1000";
    const platform::Date old(2026, 1, 2);
    EXPECT_TRUE(SaveCellConstants(*bench.instrument, std::nullopt, 4, texts, old).stored);
    const int told = bench.host.instruments.notifications();
    bench.host.instrumentArchive.storeFailures.FailNext(1);
    texts.b0 = "2000";
    const platform::Date now(2026, 2, 3);
    const SavedConstants saved = SaveCellConstants(*bench.instrument, std::nullopt, 4, texts, now);
    EXPECT_FALSE(saved.stored);
    EXPECT_EQ(saved.date, old);
    EXPECT_EQ(bench.host.instruments.notifications(), told);
    const std::vector<CellConstants> constants = bench.instrument->GetCellConstants();
    EXPECT_EQ(constants[4].date, old);
    EXPECT_EQ(constants[4].b0, 2000.0) << "the constants stay in force";
    EXPECT_EQ(constants[3].date, now);
  });
}

TEST(CalibrationTest, ARefusedSaveIsInForceAndARefusedConstantIsNot) {
  RunVirtual([] {
    CalibrationBench bench;
    ScriptableInstrument& instrument = *bench.instrument;
    ASSERT_FALSE(instrument.SetCellConstants(-20.0, 1.0, 2.0, 3.0));
    const platform::Date date = instrument.GetCellConstants()[4].date;
    bench.host.instrumentArchive.storeFailures.FailNext(1);
    EXPECT_EQ(instrument.SetCellConstants(-20.0, 0.0, 0.0, 0.0)->kind(), Kind::Archive);
    EXPECT_EQ(instrument.GetCellConstants()[4].b2, 3.0);
    EXPECT_EQ(instrument.GetCellConstants()[4].date, date);
    bench.host.instrumentArchive.storeFailures.FailNext(1);
    const ScriptingResult problem = instrument.SaveCalibration(-20.0, "1100", "-400", "5");
    ASSERT_TRUE(problem);
    EXPECT_EQ(problem->kind(), Kind::Archive);
    EXPECT_NE(problem->outcome.find("in force all the same, at -20 degC with the old date"),
              std::string::npos)
        << problem->Sentences();
    EXPECT_EQ(instrument.GetCellConstants()[4].b2, 5.0);
    EXPECT_EQ(instrument.GetCellConstants()[4].date, date);
  });
}

TEST(CalibrationTest, TheTrayHoldsEachChosenStandardWithTheWarmestTestFirst) {
  RunVirtual([] {
    CalibrationBench bench;
    bench.StoreStandards(4, {"-20", "- 5"});
    bench.instrument->Lock();
    bench.instrument->configuration().fields.testRecord.rotorOnTimes[0] = 77;
    bench.instrument->Unlock();
    ASSERT_FALSE(bench.instrument->MakeCalibrationTray({{-20.0, -5.0}, {}}));
    EXPECT_EQ(bench.TrayIds(),
              (std::vector<std::string>{"S00 L- 5", "S01 L- 5", "S02 L- 5", "S03 L- 5"}));
    const SampleTests tests =
        *bench.instrument->GetSampleTests(*bench.instrument->GetTray(0)->Hold(0));
    ASSERT_EQ(tests.tests.size(), 2u);
    EXPECT_EQ(tests.tests[0].temperature, -5.0);
    EXPECT_EQ(tests.tests[1].temperature, -20.0);
    EXPECT_EQ(tests.tests[1].rotorOnTime, 77);
    EXPECT_EQ(tests.tests[1].knownViscosity, 3000.0);
    // With constants another kind of sample action is the one for known oils.
    bench.instrument->SetCellConstants(-20.0, 1.0, 2.0, 3.0);
    ASSERT_FALSE(bench.instrument->MakeCalibrationTray({{-20.0}, {"S03", "S01", "S02"}}));
    EXPECT_EQ(bench.TrayIds(), (std::vector<std::string>{"S01 L-20", "S02 L-20", "S03 L-20"}));
  });
}

TEST(CalibrationTest, WhatDoesNotConformOrFitLeavesTheTrayAsItIs) {
  RunVirtual([] {
    CalibrationBench bench;
    bench.StoreStandards(3, {"-20"});
    ASSERT_FALSE(bench.instrument->MakeCalibrationTray({{-20.0}, {}}));
    const std::vector<std::string> before = bench.TrayIds();
    const auto refusal = [&](std::vector<double> temperatures, std::vector<std::string> only) {
      const auto problem =
          bench.instrument->MakeCalibrationTray({std::move(temperatures), std::move(only)});
      EXPECT_EQ(bench.TrayIds(), before);
      return problem ? problem->Sentences() : std::string();
    };
    EXPECT_NE(refusal({-25.0}, {}).find("A, B, C"), std::string::npos);
    EXPECT_NE(refusal({-21.0}, {}), "");
    EXPECT_NE(refusal({-20.0}, {"S00", "S01"}), "");
    EXPECT_NE(refusal({-20.0}, {"S00", "S01", "S02", "S99"}).find("S99"), std::string::npos);
    bench.StoreStandards(31, {"-20"});
    EXPECT_NE(refusal({-20.0}, {}).find("31 standards are chosen and the tray has 30 positions"),
              std::string::npos);
  });
}

TEST(CalibrationTest, ConformitySaysWhichGroupLacksWhat) {
  RunVirtual([] {
    CalibrationBench bench;
    bench.StoreStandards(2, {"-20"});
    ConformityReport report;
    ASSERT_FALSE(bench.instrument->GetConformity(report));
    EXPECT_EQ(report.groupRows, 2);
    ASSERT_EQ(report.temperatures.size(), 8u);
    const ConformityOfTemperature& entry = report.temperatures[4];
    EXPECT_FALSE(entry.conforms);
    EXPECT_EQ(entry.standards, (std::vector<std::string>{"S00", "S01"}));
    ASSERT_EQ(entry.lacks.size(), 1u);
    EXPECT_EQ(entry.lacks[0].group, "C");
    EXPECT_EQ(report.temperatures[3].lacks.size(), 3u);
  });
}

TEST(CalibrationTest, SimulatedOilsAreReadWhateverTheTextHolds) {
  const auto oils =
      ParseSimulatedOils("3\v-20\v5000\v\r0\v-20\v5000\v\r4\v-20\v-1\v\rx\r\r5\v-20\v");
  ASSERT_EQ(oils.size(), 1u);
  EXPECT_EQ(oils.at(3).at(-20.0), 5000.0);
}

}  // namespace
}  // namespace rvx
