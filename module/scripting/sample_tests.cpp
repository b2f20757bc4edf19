// The tests of a sample action by program.
#include <algorithm>
#include <cmath>

#include "boundary/standards_text.h"
#include "module/calibration/standards_map.h"
#include "module/execution/measure_visc_action.h"
#include "module/execution/sample_result.h"
#include "module/execution/visc_action.h"
#include "module/scripting/problems.h"
#include "module/scripting/scriptable_instrument.h"
#include "platform/text.h"

namespace rvx {
namespace {

// What the dialogs of the sample actions accept.
constexpr double kWarmestTest = -5.0;   // degrees C
constexpr double kColdestTest = -40.0;  // degrees C
constexpr int32_t kShortestRotorTime = 30;
constexpr int32_t kLongestTime = 255;       // s, what a byte of a command holds
constexpr double kLeastViscosity = 1000.0;  // mPa*s
constexpr double kMostViscosity = 50000.0;

bool Measures(Action& action) { return action.GetClassName() == CMeasureViscAction::kClassKey; }

ScriptingResult CheckTime(std::optional<int32_t> seconds, int32_t least, const char* field,
                          int32_t test = -1) {
  if (!seconds || (*seconds >= least && *seconds <= kLongestTime)) return std::nullopt;
  return BadValue(platform::FormatText("%d s is out of range. Accepted: %d to %d s.", *seconds,
                                       least, kLongestTime),
                  field, test);
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

}  // namespace

ScriptingResult ScriptableInstrument::CheckTests(const SampleTests& tests, bool measures) {
  if (tests.tests.empty()) return BadValue("A sample needs at least one test.", "temperature");
  if (tests.tests.size() > static_cast<size_t>(kMaxTests)) {
    return BadValue(
        platform::FormatText("%zu tests are too many. Accepted: 1 to %d tests a sample.",
                             tests.tests.size(), kMaxTests),
        "temperature", kMaxTests);
  }
  if (ScriptingResult problem = CheckTime(tests.injectionTime, 0, "injection time")) return problem;
  if (ScriptingResult problem = CheckTime(tests.coolDownTime, 0, "cool-down time")) return problem;
  for (size_t i = 0; i < tests.tests.size(); ++i) {
    const SampleTest& test = tests.tests[i];
    const int32_t index = static_cast<int32_t>(i);
    if (!(test.temperature >= kColdestTest && test.temperature <= kWarmestTest)) {
      return BadValue(platform::FormatText("%g degC is out of range. Accepted: %.f to %.f degC.",
                                           test.temperature, kColdestTest, kWarmestTest),
                      "temperature", index);
    }
    if (measures && !HasCellConstants(test.temperature)) {
      return BadValue(
          platform::FormatText("The cell has no calibration constants for %g degC. Accepted: a "
                               "calibrated temperature (see \"torvell constants show\").",
                               test.temperature),
          "temperature", index);
    }
    if (ScriptingResult problem =
            CheckTime(test.rotorOnTime, kShortestRotorTime, "rotor on time", index)) {
      return problem;
    }
    if (!test.knownViscosity) continue;
    if (measures) {
      return BadValue("A sample that is measured has no known viscosity. Accepted: an empty cell.",
                      "known viscosity", index);
    }
    if (!(*test.knownViscosity >= kLeastViscosity && *test.knownViscosity <= kMostViscosity)) {
      return BadValue(platform::FormatText("%g mPa*s is out of range. Accepted: %.f to %.f mPa*s.",
                                           *test.knownViscosity, kLeastViscosity, kMostViscosity),
                      "known viscosity", index);
    }
  }
  return std::nullopt;
}

ScriptingResult ScriptableInstrument::SetSampleTests(Action& action, const SampleTests& tests) {
  auto* sampleAction = dynamic_cast<C_RVXViscAction*>(&action);
  if (sampleAction == nullptr) {
    return BadValue("\"" + action.GetLabel() + "\" is no sample action and has no tests.",
                    "action");
  }
  if (ScriptingResult problem = CheckLevel(kLevelOperator, "Filling a tray")) return problem;
  if (action.IsRunning() != 0 || action.HasRun() != 0) {
    return Problem(ScriptingProblem::Kind::Busy,
                   "The sample is running or has run; its tests can't be changed any more.");
  }
  const bool measures = Measures(action);
  if (ScriptingResult problem = CheckTests(tests, measures)) return problem;

  sampleAction->ResetToInstrumentDefaults();
  TestRecord record = sampleAction->CopyTestRecord();
  const int32_t defaultRotorTime = record.rotorOnTimes[0];
  const bool timesChanged =
      tests.injectionTime.value_or(record.injectionTime) != record.injectionTime ||
      tests.coolDownTime.value_or(record.coolDownTime) != record.coolDownTime ||
      std::any_of(tests.tests.begin(), tests.tests.end(), [&](const SampleTest& test) {
        return test.rotorOnTime.value_or(defaultRotorTime) != defaultRotorTime;
      });
  if (timesChanged) {
    if (ScriptingResult problem = CheckLevel(kLevelManager, "Changing the times of a sample")) {
      return problem;
    }
  }
  record.injectionTime = tests.injectionTime.value_or(record.injectionTime);
  record.coolDownTime = tests.coolDownTime.value_or(record.coolDownTime);
  record.testTemperatures.fill(kTemperatureOff);
  record.rotorOnTimes.fill(0);
  record.testCount = static_cast<int32_t>(tests.tests.size());
  std::array<double, kMaxTests> viscosities{};
  for (size_t i = 0; i < tests.tests.size(); ++i) {
    const SampleTest& test = tests.tests[i];
    record.testTemperatures[i] = test.temperature;
    record.rotorOnTimes[i] = test.rotorOnTime.value_or(defaultRotorTime);
    if (measures) continue;
    const std::optional<double> stored =
        FindStandard(GetStandards(), action.GetSampleId(), test.temperature);
    if (!stored && !test.knownViscosity) {
      return BadValue(
          platform::FormatText(
              "The known viscosity is missing, and the store has no standard \"%s\" at "
              "%g degC. Accepted: %.f to %.f mPa*s, or the name of a stored standard "
              "as the sample id.",
              action.GetSampleId().c_str(), test.temperature, kLeastViscosity, kMostViscosity),
          "known viscosity", static_cast<int32_t>(i));
    }
    // A stored action of a standard takes the store's value whenever it is loaded, so another one
    // would not last.
    if (stored && test.knownViscosity && *stored != *test.knownViscosity) {
      return BadValue(
          platform::FormatText(
              "%g mPa*s differs from the stored standard \"%s\", which has %g mPa*s "
              "at %g degC. Accepted: an empty cell or the stored value.",
              *test.knownViscosity, action.GetSampleId().c_str(), *stored, test.temperature),
          "known viscosity", static_cast<int32_t>(i));
    }
    viscosities[i] = stored ? *stored : *test.knownViscosity;
  }
  if (!sampleAction->AssignTests(record, viscosities)) {
    return Problem(ScriptingProblem::Kind::Busy, "The sample has been started meanwhile.");
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
