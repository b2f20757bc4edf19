// The controller's program: manual switches, the sequences of a test, a motor run and a move, and
// the motion of the three stepper axes. It knows nothing of frames.
#pragma once

#include <cstdint>

#include "module/simulator/sim_board.h"
#include "module/simulator/sim_protocol.h"

namespace rvx::simulator {

// The figures of a test or motor-current run. Times are in ticks of half a second, temperatures in
// ADC counts.
struct SimRunProgram {
  uint8_t position = 0;  // tray position; 0 in a motor-current run is the oil in the stator block
  uint16_t injectionTime = 0;  // 0: nothing is injected, the oil in the cell is used
  uint16_t burstTime = 0;
  uint16_t pauseTime = 0;
  uint16_t purgeTime = 0;
  uint16_t cooldownTime = 0;
  uint16_t rotorTime = 0;
  uint16_t testCounts = 0;
  uint16_t injectionCounts = 0;
  uint16_t undershoot = 0;
  uint16_t tolerance = 0;
};

// All operations belong to the simulator's main thread.
class SimFirmware {
 public:
  explicit SimFirmware(SimBoard& board);

  // One pass of the machines at the given count of the clock. True if it changed something that
  // another pass at the same moment may act on.
  bool Pass(uint16_t intCount);

  // Commands. Each returns the error code of the status frame that answers it. Values are the bytes
  // of the command.
  void EndRun();
  SimError SetHome();
  SimError SwitchInjection(uint8_t value);
  SimError SwitchAutoReport(uint8_t value);
  SimError SwitchRotor(uint8_t value);
  SimError SwitchCooling(uint8_t value);
  SimError SetTemperatureControl(uint8_t enable, uint16_t counts);
  SimError MoveManually(uint8_t selector, uint16_t target);
  SimError MoveToPosition(uint8_t position);
  SimError StartTest(const SimRunProgram& program);
  SimError StartMotorCurrent(const SimRunProgram& program);
  // `time` in ticks, `speed` in speed counts.
  SimError StartPrecondition(uint16_t time, uint16_t speed);

  uint8_t switchByte() const { return switchByte_; }
  // On by command, and throughout every sequence that looks at the clock or at the cell; so nothing
  // here depends on a tick that is not reported.
  bool autoReport() const { return autoReport_; }
  bool homed() const { return homed_; }
  // What the status record shows: a stepper's operation while one is in motion.
  SimOperation ShownOperation() const;

  // Counted positions of the axes in steps.
  uint16_t tubePosition() const { return tube_.position; }
  uint16_t tablePosition() const { return table_.position; }
  uint16_t trolleyPosition() const { return trolley_.position; }

 private:
  // Where the step machine is. Each pass runs the present step once.
  enum class Step : uint8_t {
    Ending,         // the sequence is over; clears up and goes to Rest
    Rest,           // nothing runs
    WaitForWarm,    // until the cell is at the injection temperature; then the return step
    LowerTube,      // until the tube may start down
    AwaitTubeDown,  // until it is down; then the injection
    Burst,          // injection phases, repeated until the injection time is up
    Pause,
    Purge,
    RaiseTube,    // until the tube may start up; the cell begins to cool
    AwaitTubeUp,  // until it is up; then the return step
    // Move to a position.
    MoveTrolley,
    MoveTable,
    AwaitMove,
    // Motor-current run.
    CurrentStart,
    CurrentTrolley,
    CurrentTable,
    CurrentLocated,
    CurrentCooldown,
    CurrentEquilibration,
    CurrentRun,
    // Precondition.
    SeekSpeed,     // until the rotor has its speed
    Precondition,  // until the time is up
    // Test.
    TestStart,
    TestTrolley,
    TestTable,
    TestLocated,
    TestCooldown,       // until the cell has been within the tolerance for a while
    TestEquilibration,  // for the cool-down time
    TestRun             // for the rotor time
  };

  // Where the stepper machine is.
  enum class Stepper : uint8_t {
    Finishing,  // a move is over; clears its signs and goes to AtRest
    AtRest,     // the only state in which a move may be asked for
    Aborting,   // ends the move with the step under way
    TubeStart,
    TableStart,
    TrolleyStart,
    Moving  // until the board has made all steps
  };

  // One stepper axis: its counted position and its last or present move.
  struct Axis {
    SimAxis drive;
    uint16_t position;
    bool up = false;  // the position grows
    uint16_t steps = 0;
  };

  void RunStep();
  void RunCommonStep();
  void RunInjectionStep();
  void RunMoveStep();
  void RunCurrentStep();
  void RunPreconditionStep();
  void RunTestStep();
  void Warm(Step then);
  void StartCooling(Step then);
  void AwaitCooldown(Step then);
  void AwaitEquilibration(SimOperation then, Step run);
  void AwaitRunEnd();
  void RunStepper();
  void BeginMove(Axis& axis, SimOperation operation);
  void AbortMove();

  void Enter(Step step);
  void EnterVia(Step step, Step then);
  void SetStepper(Stepper state);
  void Injection(bool on);
  void Rotor(bool on);
  void Control(bool on);
  void Seek(uint16_t counts);
  void SetSwitch(uint8_t bit, bool on);
  bool StepperIdle() const { return stepper_ == Stepper::AtRest; }
  uint16_t TicksSince(uint16_t count) const { return static_cast<uint16_t>(intCount_ - count); }

  void AskForMove(Axis& axis, Stepper start, uint16_t target);
  bool MoveTube(uint16_t target);
  bool MoveTable(uint16_t target);
  bool MoveTrolley(uint16_t target);
  bool MoveUnderTube(Axis& axis, Stepper start, uint16_t target);
  void LocatePosition(uint8_t position);
  bool SequenceRuns() const { return (switchByte_ & (kSwitchTest | kSwitchMotorRun)) != 0; }
  // `sample` is the tray position (from 1) whose oil would be injected; 0: none.
  SimError StartRun(const SimRunProgram& program, uint8_t lastPosition, uint8_t sample,
                    bool moveTube, uint8_t runBit, Step first);

  SimBoard& board_;

  bool progressed_ = false;  // the pass under way changed something
  uint16_t intCount_ = 0;    // the clock at the beginning of the pass

  Step step_ = Step::Ending;
  Step returnStep_ = Step::Ending;
  uint16_t stepTime_ = 0;  // clock at the entry of the step
  uint16_t injectionStart_ = 0;
  uint16_t phaseStart_ = 0;

  bool autoReport_ = false;
  uint8_t switchByte_ = 0;
  SimOperation operation_ = SimOperation::Idle;
  SimOperation stepperOperation_ = SimOperation::Idle;

  SimRunProgram program_;
  uint16_t preconditionTime_ = 0;
  uint16_t targetSpeed_ = 0;
  uint16_t currentTarget_ = 0;  // the temperature that the sequence now seeks

  bool homed_ = false;
  Stepper stepper_ = Stepper::Finishing;
  Stepper stepperNext_ = Stepper::Finishing;  // where the end of the present move leads
  uint16_t tableTarget_ = 0;
  uint16_t trolleyTarget_ = 0;
  Axis* movingAxis_ = nullptr;  // the axis whose steps are not yet in its position
  // Until they are homed, the axes are taken to be at their far ends.
  Axis tube_;
  Axis table_;
  Axis trolley_;
};

}  // namespace rvx::simulator
