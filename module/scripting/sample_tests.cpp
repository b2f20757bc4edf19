// The tests of a sample action by program.
#include <algorithm>
#include <cmath>

#include "boundary/action_keys.h"
#include "boundary/standards_text.h"
#include "module/calibration/standards_map.h"
#include "module/execution/sample_result.h"
#include "module/execution/visc_action.h"
#include "module/instrument/problems.h"
#include "module/scripting/scriptable_instrument.h"
#include "platform/text.h"

namespace rvx {
namespace {

// The ranges that the dialogs of the sample actions accept.
constexpr double kWarmestTest = -5.0;          // degrees C
constexpr double kColdestTest = -40.0;         // degrees C
constexpr int32_t kMaxTime = kMaxRotorOnTime;  // s, of every time of a sample

bool Measures(Action& action) {
  return action.GetClassName() == kActionClassKeys[kMeasureViscAction];
}

ScriptingResult CheckTime(std::optional<int32_t> seconds, int32_t least, Field field) {
  if (!seconds || (*seconds >= least && *seconds <= kMaxTime)) return std::nullopt;
  return BadValue(Code::OutOfRange, field, platform::FormatText("%d s is out of range.", *seconds),
                  platform::FormatText("%d to %d s", least, kMaxTime));
}

// The viscosity that the store keeps for a standard of this name at a temperature, if any.
std::optional<double> FindStandard(CStandardsMap* standards, const std::string& name,
                                   double temperature) {
  if (standards == nullptr) return std::nullopt;
  for (const char* text : kTemperatureTexts) {
    if (platform::ParseLeadingDouble(platform::RemoveBlanks(text)) != temperature) continue;
    try {
      const int index = standards->FindUsableTemperature(name, text);
      if (index >= 0) return standards->GetStandardViscosity(name, index);
    } catch (InvalidException* noSuchStandard) {
      delete noSuchStandard;
    }
  }
  return std::nullopt;
}

// Checks one test of a sample; of one that is measured, the cell must have constants for it.
ScriptingResult CheckTest(C_RVX& instrument, const SampleTest& test, bool measures) {
  if (!(test.temperature >= kColdestTest && test.temperature <= kWarmestTest)) {
    return BadValue(Code::OutOfRange, Field::Temperature,
                    platform::FormatText("%g degC is out of range.", test.temperature),
                    platform::FormatText("%.f to %.f degC", kColdestTest, kWarmestTest));
  }
  if (measures && !instrument.HasCellConstants(test.temperature)) {
    return BadValue(Code::NoCellConstants, Field::Temperature,
                    platform::FormatText("The cell has no calibration constants for %g degC.",
                                         test.temperature),
                    "a calibrated temperature");
  }
  if (ScriptingResult problem = CheckTime(test.rotorOnTime, kMinRotorOnTime, Field::RotorOnTime)) {
    return problem;
  }
  if (!test.knownViscosity) return std::nullopt;
  if (measures) {
    return BadValue(Code::NotWanted, Field::KnownViscosity,
                    "A sample that is measured has no known viscosity.", "an empty cell");
  }
  if (*test.knownViscosity >= kMinKnownViscosity && *test.knownViscosity <= kMaxKnownViscosity) {
    return std::nullopt;
  }
  return BadValue(Code::OutOfRange, Field::KnownViscosity,
                  platform::FormatText("%g mPa*s is out of range.", *test.knownViscosity),
                  platform::FormatText("%.f to %.f mPa*s", kMinKnownViscosity, kMaxKnownViscosity));
}

// Whether a test record with other times than those of the instrument is wanted.
bool ChangesTimes(const SampleTests& tests, const TestRecord& defaults) {
  const int32_t rotorTime = defaults.rotorOnTimes[0];
  return tests.injectionTime.value_or(defaults.injectionTime) != defaults.injectionTime ||
         tests.coolDownTime.value_or(defaults.coolDownTime) != defaults.coolDownTime ||
         std::any_of(tests.tests.begin(), tests.tests.end(), [&](const SampleTest& test) {
           return test.rotorOnTime.value_or(rotorTime) != rotorTime;
         });
}

// Puts the tests into a record that has the instrument's defaults.
void FillRecord(const SampleTests& tests, TestRecord& record) {
  const int32_t defaultRotorTime = record.rotorOnTimes[0];
  record.injectionTime = tests.injectionTime.value_or(record.injectionTime);
  record.coolDownTime = tests.coolDownTime.value_or(record.coolDownTime);
  record.testTemperatures.fill(kTemperatureOff);
  record.rotorOnTimes.fill(0);
  record.testCount = static_cast<int32_t>(tests.tests.size());
  for (size_t i = 0; i < tests.tests.size(); ++i) {
    record.testTemperatures[i] = tests.tests[i].temperature;
    record.rotorOnTimes[i] = tests.tests[i].rotorOnTime.value_or(defaultRotorTime);
  }
}

// The known viscosity of a test of the oil `name`: the stored standard's if there is one.
ScriptingResult FindKnownViscosity(CStandardsMap* standards, const std::string& name,
                                   const SampleTest& test, double& viscosity) {
  const std::optional<double> stored = FindStandard(standards, name, test.temperature);
  if (!stored && !test.knownViscosity) {
    return BadValue(
        Code::Missing, Field::KnownViscosity,
        platform::FormatText(
            "The known viscosity is missing, and the store has no standard \"%s\" at %g degC.",
            name.c_str(), test.temperature),
        platform::FormatText("%.f to %.f mPa*s, or the name of a stored standard as the sample id",
                             kMinKnownViscosity, kMaxKnownViscosity));
  }
  // An action of a standard takes the store's value whenever it is loaded, so another value would
  // be lost.
  if (stored && test.knownViscosity && *stored != *test.knownViscosity) {
    return BadValue(
        Code::DiffersFromStandard, Field::KnownViscosity,
        platform::FormatText(
            "%g mPa*s differs from the stored standard \"%s\", which has %g mPa*s at %g degC.",
            *test.knownViscosity, name.c_str(), *stored, test.temperature),
        "an empty cell or the stored value");
  }
  viscosity = stored ? *stored : *test.knownViscosity;
  return std::nullopt;
}

}  // namespace

ScriptingResult ScriptableInstrument::CheckTests(const SampleTests& tests, bool measures) {
  if (tests.tests.empty()) {
    return BadValue(Code::Missing, Field::Temperature, "A sample needs at least one test.");
  }
  if (tests.tests.size() > static_cast<size_t>(kMaxTests)) {
    return OfTest(BadValue(Code::TooMany, Field::Temperature,
                           platform::FormatText("%zu tests are too many.", tests.tests.size()),
                           platform::FormatText("1 to %d tests a sample", kMaxTests)),
                  kMaxTests);
  }
  if (ScriptingResult problem = CheckTime(tests.injectionTime, 0, Field::InjectionTime))
    return problem;
  if (ScriptingResult problem = CheckTime(tests.coolDownTime, 0, Field::CoolDownTime))
    return problem;
  for (size_t i = 0; i < tests.tests.size(); ++i) {
    if (ScriptingResult problem = CheckTest(*this, tests.tests[i], measures)) {
      return OfTest(*problem, static_cast<int32_t>(i));
    }
  }
  return std::nullopt;
}

ScriptingResult ScriptableInstrument::SetSampleTests(Action& action, const SampleTests& tests) {
  auto* sampleAction = dynamic_cast<C_RVXViscAction*>(&action);
  if (sampleAction == nullptr) {
    return BadValue(Code::NoSampleAction, Field::Action,
                    "\"" + action.GetLabel() + "\" is no sample action and has no tests.");
  }
  if (ScriptingResult problem = CheckLevel(kLevelOperator, "Filling a tray")) return problem;
  if (action.IsRunning() != 0 || action.HasRun() != 0) {
    return Unable(Code::SampleStarted,
                  "The sample is running or has run; its tests can't be changed any more.");
  }
  const bool measures = Measures(action);
  if (ScriptingResult problem = CheckTests(tests, measures)) return problem;

  sampleAction->ResetToInstrumentDefaults();
  TestRecord record = sampleAction->CopyTestRecord();
  if (ChangesTimes(tests, record)) {
    if (ScriptingResult problem = CheckLevel(kLevelManager, "Changing the times of a sample")) {
      return problem;
    }
  }
  FillRecord(tests, record);
  std::array<double, kMaxTests> viscosities{};
  for (size_t i = 0; !measures && i < tests.tests.size(); ++i) {
    if (ScriptingResult problem = FindKnownViscosity(GetStandards(), action.GetSampleId(),
                                                     tests.tests[i], viscosities[i])) {
      return OfTest(*problem, static_cast<int32_t>(i));
    }
  }
  if (!sampleAction->AssignTests(record, viscosities)) {
    return Unable(Code::SampleStarted, "The sample has been started meanwhile.");
  }
  return std::nullopt;
}

std::optional<SampleTests> ScriptableInstrument::GetSampleTests(Action& action) {
  auto* sampleAction = dynamic_cast<C_RVXViscAction*>(&action);
  if (sampleAction == nullptr) return std::nullopt;
  const TestRecord record = sampleAction->CopyTestRecord();
  const std::array<double, kMaxTests> viscosities = sampleAction->CopyKnownViscosities();
  SampleTests tests;
  tests.injectionTime = record.injectionTime;
  tests.coolDownTime = record.coolDownTime;
  for (size_t i = 0; i < static_cast<size_t>(std::clamp(record.testCount, 0, kMaxTests)); ++i) {
    SampleTest test;
    test.temperature = record.testTemperatures[i];
    test.rotorOnTime = record.rotorOnTimes[i];
    if (!Measures(action)) test.knownViscosity = viscosities[i];
    tests.tests.push_back(test);
  }
  return tests;
}

int32_t ScriptableInstrument::EstimateSeconds(Action& action) {
  auto* sampleAction = dynamic_cast<C_RVXViscAction*>(&action);
  if (sampleAction == nullptr) return 0;
  const TestRecord record = sampleAction->CopyTestRecord();
  return EstimateRunSeconds(record, record.testCount);
}

}  // namespace rvx
