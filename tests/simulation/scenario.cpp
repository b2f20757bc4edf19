#include "tests/simulation/scenario.h"

#include <algorithm>
#include <string>

#include "tests/simulation/draws.h"

namespace rvx::soak {
namespace {

using platform::Milliseconds;
using platform::StreamId;
using namespace std::chrono_literals;

constexpr double kNoFaults = 0.2;
constexpr double kEachFault = 0.3;
// Each row is the first of a group of faults. Half of the seeds have no fault of a group: otherwise
// hardly a seed would have operators without a bad line.
constexpr struct {
  Fault first;
  const char* name;
} kGroups[] = {{Fault::LostByte, "line"},
               {Fault::Silent, "instrument"},
               {Fault::ArchiveBusy, "host"},
               {Fault::Operator, "people"},
               {Fault::Stalls, "schedule"}};
constexpr double kEachGroup = 0.5;
constexpr double kTemperatures[] = {-10.0, -15.0, -20.0, -25.0, -30.0, -35.0};

FaultRates DrawRates(uint64_t seed, const std::set<Fault>& without) {
  FaultRates rates;
  const bool calm = Draws(seed, StreamId::Scenario, "calm").Chance(kNoFaults);
  bool inGroup = false;
  for (size_t i = 0; i < kFaultCount; ++i) {
    const auto fault = static_cast<Fault>(i);
    const FaultKind& kind = KindOf(fault);
    for (const auto& group : kGroups) {
      if (group.first != fault) continue;
      inGroup = Draws(seed, StreamId::Scenario, group.name).Chance(kEachGroup);
    }
    Draws draws(seed, StreamId::Scenario, kind.name);
    const bool happens = draws.Chance(kEachFault);
    const double rate = draws.LogUniform(kind.low, kind.high);
    if (without.contains(fault)) continue;
    if (fault == Fault::Stalls || (happens && inGroup && !calm)) rates.Set(fault, rate);
  }
  return rates;
}

PlannedSample DrawSample(Draws& draws, int position, Profile profile) {
  PlannedSample sample;
  sample.position = position;
  sample.verifies = draws.Chance(0.2);
  const bool isShort = profile == Profile::Short;
  const int tests = isShort ? draws.Between(1, 2) : draws.Between(1, 3);
  for (int i = 0; i < tests; ++i) {
    PlannedTest test;
    test.temperature = kTemperatures[draws.Below(static_cast<int>(std::size(kTemperatures)))];
    // The tests of a sample differ, so that a record tells to which test it belongs.
    test.rotorTime = isShort ? draws.Between(6, 8) + 4 * i : draws.Between(30, 39) + 10 * i;
    sample.tests.push_back(test);
  }
  return sample;
}

void DrawTray(Scenario& scenario) {
  Draws draws(scenario.seed, StreamId::Scenario, "tray");
  const bool isShort = scenario.profile == Profile::Short;
  const int count = isShort ? draws.Between(1, 3) : draws.Between(4, 30);
  scenario.injectionTime = isShort ? draws.Between(0, 3) : 240;
  scenario.coolDownTime = isShort ? draws.Between(1, 3) : 180;
  scenario.preconditionTime = draws.Chance(0.2) ? 1 : 0;
  int position = 0;
  for (int i = 0; i < count && position < 30; ++i) {
    if (draws.Chance(0.2) && position < 28) ++position;
    scenario.samples.push_back(DrawSample(draws, position++, scenario.profile));
  }
  constexpr char kModels[] = {'4', '4', '2', '3', '1'};
  scenario.modelCode = kModels[draws.Below(5)];
  const int kind = draws.Below(isShort ? 10 : 4);
  if (kind == 0) scenario.controller = ControllerKind::SimulatedOnPort;
  if (kind == 1) scenario.controller = ControllerKind::SimulatedInside;
  if (scenario.controller != ControllerKind::Scripted) scenario.modelCode = '4';
  // A counter that starts near its end wraps in the middle of the run.
  if (draws.Chance(0.25)) scenario.startCount = static_cast<uint16_t>(65536 - draws.Between(1, 99));
}

Milliseconds EstimateOf(const Scenario& scenario) {
  // The simulator moves its steppers and its cell as slowly as the instrument does.
  const bool plays = scenario.controller == ControllerKind::Scripted;
  int64_t seconds = 30 + scenario.preconditionTime * (plays ? 75 : 500);
  for (const PlannedSample& sample : scenario.samples) {
    seconds += 3;
    for (const PlannedTest& test : sample.tests) {
      seconds +=
          (plays ? 8 : 150) + 2 + scenario.injectionTime + scenario.coolDownTime + test.rotorTime;
    }
  }
  return std::chrono::seconds(seconds);
}

OperatorDeed DrawDeed(Draws& draws) {
  constexpr OperatorDeed kDeeds[] = {
      OperatorDeed::Start,      OperatorDeed::PauseNow, OperatorDeed::PauseShortly,
      OperatorDeed::Start,      OperatorDeed::Start,    OperatorDeed::PauseShortly,
      OperatorDeed::PauseAfter, OperatorDeed::Resume,   OperatorDeed::Resume,
      OperatorDeed::Resume,     OperatorDeed::Resume,   OperatorDeed::QueryPause,
      OperatorDeed::Abort,      OperatorDeed::Rename,   OperatorDeed::Replace,
      OperatorDeed::Reload,     OperatorDeed::Command,  OperatorDeed::Command,
      OperatorDeed::Command,    OperatorDeed::OwnMove,  OperatorDeed::OwnMeasurement};
  return kDeeds[draws.Below(static_cast<int>(std::size(kDeeds)))];
}

std::vector<OperatorStep> DrawSteps(const Scenario& scenario, Fault fault) {
  if (!scenario.rates.Has(fault)) return {};
  Draws draws(scenario.seed, StreamId::Operator, KindOf(fault).name);
  std::vector<OperatorStep> steps(static_cast<size_t>(scenario.rates[fault]));
  for (OperatorStep& step : steps) {
    step.at = Milliseconds(
        static_cast<int64_t>(draws.Unit() * static_cast<double>(scenario.estimate.count())));
    step.deed = DrawDeed(draws);
    step.position = draws.Below(4);
    step.lasts = draws.LogUniform(1ms, 20000ms);
  }
  std::sort(steps.begin(), steps.end(),
            [](const OperatorStep& a, const OperatorStep& b) { return a.at < b.at; });
  return steps;
}

Milliseconds DrawDuration(Draws& draws, Fault fault) {
  switch (fault) {
    case Fault::CutLine:
      return draws.LogUniform(1000ms, 600'000ms);
    case Fault::Silent:
      return draws.LogUniform(100ms, 600'000ms);
    case Fault::PowerCycle:
      return draws.LogUniform(1000ms, 15'000ms);
    case Fault::CountRepeats:
      return draws.LogUniform(500ms, 10'000ms);
    case Fault::ArchiveReadOnly:
      return draws.LogUniform(60'000ms, 7'200'000ms);
    case Fault::ClockJumps:
      return draws.LogUniform(1000ms, 400 * 86'400'000ms);  // how far; back for odd values
    default:
      return draws.LogUniform(500ms, 120'000ms);
  }
}

void DrawMishaps(Scenario& scenario) {
  for (const Fault fault :
       {Fault::CutLine, Fault::Silent, Fault::Refuses, Fault::NotReady, Fault::SteppersLost,
        Fault::GoesIdle, Fault::PowerCycle, Fault::NeverSettles, Fault::CountJumps,
        Fault::CountRepeats, Fault::ArchiveReadOnly, Fault::ClockJumps}) {
    if (!scenario.rates.Has(fault)) continue;
    Draws draws(scenario.seed, StreamId::Instrument, KindOf(fault).name);
    const int count = static_cast<int>(scenario.rates[fault]);
    for (int i = 0; i < count; ++i) {
      Mishap mishap;
      mishap.fault = fault;
      mishap.at = Milliseconds(
          static_cast<int64_t>(draws.Unit() * static_cast<double>(scenario.estimate.count())));
      mishap.lasts = DrawDuration(draws, fault);
      mishap.value = draws.Between(1, 65535);
      scenario.mishaps.push_back(mishap);
    }
  }
  std::stable_sort(scenario.mishaps.begin(), scenario.mishaps.end(),
                   [](const Mishap& a, const Mishap& b) { return a.at < b.at; });
}

}  // namespace

Scenario DrawScenario(uint64_t seed, Profile profile, const std::set<Fault>& without) {
  Scenario scenario;
  scenario.seed = seed;
  scenario.profile = profile;
  scenario.rates = DrawRates(seed, without);
  DrawTray(scenario);
  scenario.estimate = EstimateOf(scenario);
  Draws draws(seed, StreamId::Scenario, "moments");
  scenario.horizon = scenario.estimate + draws.LogUniform(1000ms, scenario.estimate);
  scenario.destroyAt = draws.LogUniform(10ms, scenario.estimate);
  scenario.steps[0] = DrawSteps(scenario, Fault::Operator);
  scenario.steps[1] = DrawSteps(scenario, Fault::SecondOperator);
  DrawMishaps(scenario);
  return scenario;
}

uint16_t SpeedCountsOf(int position) { return static_cast<uint16_t>(2500 + 111 * position); }

}  // namespace rvx::soak
