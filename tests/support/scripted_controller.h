// A controller at the other end of a fake port that behaves like a real one: it runs tests, motor
// runs and moves through their operations, tick by tick, with big-endian status frames. A test
// disturbs it command by command.
//
//   FakePort& port = host.ports.Add("COM1");
//   ScriptedController controller(port);               // model "4", address 0
//   C_RVX instrument("COM1", 0, controller.identification(), table);
//   controller.Ignore("ST", 2);                        // the first two CST are lost
//   controller.AtOperation(13, [&] { controller.RaiseError(0xE1); });
//
// With SetPlaying(false) it only replies: the test sets every field by hand.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"
#include "tests/support/fake_controller.h"
#include "tests/support/fake_port.h"

namespace rvx {

// Any thread may call it; the hooks run on its own thread, without a lock, and may call it too.
// Make it where threads can be started; it must outlive the instrument, and the port must outlive
// it.
class ScriptedController {
 public:
  explicit ScriptedController(FakePort& port, char modelCode = '4', uint8_t address = 0);
  ~ScriptedController();
  ScriptedController(const ScriptedController&) = delete;
  ScriptedController& operator=(const ScriptedController&) = delete;

  // The text that a discovery would pass to the instrument.
  std::string identification() const;

  // --- The status, shown by the next frame.
  void SetTemperature(double celsius);   // by the default probe, without an offset
  void SetTarget(double celsius);        // 65535.0: off
  void SetSpeedCounts(uint16_t counts);  // while the rotor turns
  void SetOperation(uint8_t operation);
  void SetSwitchByte(uint8_t bits);
  void SetMachineStatus(uint8_t bits);
  void SetPromptFlag(uint8_t flag);
  // Holds the int count at a value; otherwise it advances twice a second.
  void SetIntCount(uint16_t count);
  // Lets it advance from this value on.
  void SetStartCount(uint16_t count);
  // Sends a status frame that nobody asked for.
  void Report();
  // Sends one with an error code; the frames after it have none.
  void RaiseError(uint8_t code);
  StatusBytes status();

  // --- What happens to the next `count` (-1: all) requests of a tag. The last call counts.
  void Ignore(const std::string& tag, int count);  // received, neither carried out nor answered
  void Refuse(const std::string& tag, uint8_t code, int count);
  void Delay(const std::string& tag, platform::Milliseconds delay, int count);
  // Receives everything, carries out and replies to nothing.
  void SetSilent(bool silent);

  // --- The play of sequences; on at first.
  void SetPlaying(bool playing);
  // Off: a CTC changes the target and not the cell's temperature, which otherwise jumps to it.
  void SetFollowing(bool following);
  // Calls `hook` once when the play next enters an operation, before the frame that shows it.
  void AtOperation(uint8_t operation, std::function<void()> hook);
  // Ends what is being played, as a controller that stops by itself.
  void GoIdle();

  // --- What was heard: texts of the commands (without "/" and CR; queries are left out).
  std::vector<std::string> commands();
  int CountCommands(const std::string& tag);
  // When each command of a tag came.
  std::vector<platform::Microseconds> CommandTimes(const std::string& tag);
  // Waits until at least `count` commands of a tag have been received. Returns false at the
  // deadline. One thread at a time.
  bool WaitForCommands(const std::string& tag, int count, platform::Milliseconds timeout);
  void ForgetCommands();

 private:
  struct Disturbance {
    enum class Kind { Ignore, Refuse, Delay } kind = Kind::Ignore;
    uint8_t code = 0;
    platform::Milliseconds delay{0};
    int remaining = 0;
  };
  struct PlayStep {
    uint8_t operation = 0;
    int ticks = 0;
    uint16_t speedCounts = 0;
    int temperatureCounts = -1;  // -1: as it is
    bool waitsForUser = false;   // the prompt flag is up until CUA
  };

  // What a tick of the play leads to.
  struct Tick {
    bool reports = false;  // a status frame goes out
    std::vector<std::function<void()>> hooks;
  };

  void RunThread();
  void Hear(std::span<const uint8_t> bytes);
  // Why a valid command can't be carried out now: its error code, or 0.
  uint8_t ReasonToRefuse(const std::string& tag) REQUIRES(lock_);
  void Obey(const std::string& tag, const std::vector<uint8_t>& payload) REQUIRES(lock_);
  void PlayTest(const std::vector<uint8_t>& payload) REQUIRES(lock_);
  void Play(uint8_t switchByte, std::vector<PlayStep> steps) REQUIRES(lock_);
  void EndPlay() REQUIRES(lock_);
  // Advances the int count while nothing is played.
  void CatchUp() REQUIRES(lock_);
  void AdvanceIntCount(int64_t ticks) REQUIRES(lock_);
  // One tick of the play.
  Tick PlayTick() REQUIRES(lock_);
  void EnterStep(Tick& tick) REQUIRES(lock_);
  Tick TickIfDue() REQUIRES(lock_);
  platform::Deadline NextDeadline() REQUIRES(lock_);
  // Late replies that are due now.
  std::vector<std::string> TakeDueReplies() REQUIRES(lock_);
  std::string MakeStatus(uint8_t code, const std::string& tag) REQUIRES(lock_);
  void SetByte(size_t offset, uint8_t value);
  void SetWord(size_t offset, uint16_t value) REQUIRES(lock_);
  void Disturb(const std::string& tag, Disturbance disturbance);

  FakePort& port_;
  const char modelCode_;
  const uint8_t address_;
  platform::Event changed_{"scripted controller"};
  platform::Event heard_{"scripted controller heard"};
  // Taken before the port's lock: frames are sent under it, so that they leave in the order in
  // which they were made, as on the one serial line of a real controller.
  platform::PlainLock lock_{"scripted controller", 5650};
  StatusBytes status_ GUARDED_BY(lock_){};
  platform::Microseconds lastTick_ GUARDED_BY(lock_){0};
  bool countHeld_ GUARDED_BY(lock_) = false;
  bool silent_ GUARDED_BY(lock_) = false;
  bool playing_ GUARDED_BY(lock_) = true;
  bool following_ GUARDED_BY(lock_) = true;
  uint16_t speedCounts_ GUARDED_BY(lock_) = 4000;
  std::vector<PlayStep> play_ GUARDED_BY(lock_);  // empty when nothing is played
  size_t playStep_ GUARDED_BY(lock_) = 0;
  int ticksLeft_ GUARDED_BY(lock_) = 0;
  bool entered_ GUARDED_BY(lock_) = false;
  std::map<std::string, Disturbance> disturbances_ GUARDED_BY(lock_);
  std::multimap<uint8_t, std::function<void()>> hooks_ GUARDED_BY(lock_);
  std::vector<std::pair<platform::Microseconds, std::string>> commands_ GUARDED_BY(lock_);
  // Replies that are delayed longer than the line's other bytes, so that others may pass them.
  std::multimap<platform::Microseconds, std::string> lateReplies_ GUARDED_BY(lock_);
  bool stop_ GUARDED_BY(lock_) = false;
  std::shared_ptr<platform::Thread> thread_;
};

}  // namespace rvx
