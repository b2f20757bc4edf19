// What happens in one simulated run: everything is drawn from its seed before it begins.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "platform/time_base.h"
#include "tests/simulation/fault.h"

namespace rvx::soak {

// The size of a run.
enum class Profile {
  Short,  // 1 to 3 samples with short times
  Tray    // a tray of up to 30 positions with the times of a laboratory
};

// What is at the other end of the line.
enum class ControllerKind {
  Scripted,         // plays tests on a port, with the real byte order
  SimulatedOnPort,  // the built-in simulator behind a port, its bytes put into the real order
  SimulatedInside   // the built-in simulator as a simulating module uses it: no line, no faults
                    // there
};

struct PlannedTest {
  double temperature = -20.0;  // degrees C
  int rotorTime = 10;          // s
};

struct PlannedSample {
  int position = 0;  // from 0
  bool verifies = false;
  std::vector<PlannedTest> tests;
};

// What an operator can do at one step.
enum class OperatorDeed {
  Start,
  PauseNow,
  PauseShortly,
  PauseAfter,
  QueryPause,
  Resume,
  Abort,
  Rename,
  Replace,
  Reload,
  Command,
  OwnMove,
  OwnMeasurement
};

struct OperatorStep {
  platform::Milliseconds at{0};  // after the start of the tray
  OperatorDeed deed = OperatorDeed::Start;
  int position = 0;
  platform::Milliseconds lasts{0};  // for deeds that the operator waits for
};

// A fault of the line or the instrument that begins at `at` and lasts. The meaning of `value`
// depends on the fault.
struct Mishap {
  platform::Milliseconds at{0};
  Fault fault = Fault::Silent;
  platform::Milliseconds lasts{0};
  int value = 0;
};

struct Scenario {
  uint64_t seed = 0;
  Profile profile = Profile::Short;
  FaultRates rates;

  ControllerKind controller = ControllerKind::Scripted;
  char modelCode = '4';
  uint16_t startCount = 1;  // first int count

  int injectionTime = 0;     // s
  int coolDownTime = 2;      // s
  int preconditionTime = 0;  // min
  std::vector<PlannedSample> samples;
  platform::Milliseconds estimate{0};  // of the tray without faults
  platform::Milliseconds horizon{0};   // when the faults end
  platform::Milliseconds destroyAt{0};

  std::vector<OperatorStep> steps[2];
  std::vector<Mishap> mishaps;  // in order of time
};

// Draws the scenario of a seed. `without` names faults that are switched off; all other draws stay
// the same.
Scenario DrawScenario(uint64_t seed, Profile profile, const std::set<Fault>& without);

// The speed counts that the scripted controller shows while it runs a sample of this position.
uint16_t SpeedCountsOf(int position);

}  // namespace rvx::soak
