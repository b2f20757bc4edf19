// What tests of actions and sequencers share: an instrument with a controller at the other end of
// its line, under virtual time.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "module/execution/action_classes.h"
#include "module/execution/launch_record.h"
#include "module/execution/sequencer.h"
#include "module/instrument/c_rvx.h"
#include "platform/prompt.h"
#include "tests/support/fake_host.h"
#include "tests/support/scripted_controller.h"

namespace rvx {

using namespace std::chrono_literals;

// Runs a test's body as the first thread of a virtual time that begins at a fixed date.
inline void InVirtualTime(const std::function<void()>& body, uint64_t seed) {
  SCOPED_TRACE("scheduler seed " + std::to_string(seed));
  platform::TimeBaseOptions options;
  options.kind = platform::TimeBaseKind::Virtual;
  options.seed = seed;
  options.startOfClock = platform::Date(2026, 1, 31, 12, 0, 0);
  platform::RunUnderTimeBase(options, [&] {
    body();
    return 0;
  });
}

// Runs the body with several seeds, so that no test depends on one order of the threads.
inline void InVirtualTime(const std::function<void()>& body) {
  for (uint64_t seed = 1; seed <= 5; ++seed) InVirtualTime(body, seed);
}

// Answers every prompt, counts them, and can do something while the box is open.
class PromptCounter : public platform::Prompter {
 public:
  PromptCounter() { platform::SetPrompter(this); }
  ~PromptCounter() override { platform::SetPrompter(nullptr); }
  platform::MessageAnswer ShowMessage(const std::string& text, platform::MessageButtons,
                                      platform::MessageIcon) override {
    texts.push_back(text);
    if (whileOpen) whileOpen();
    return platform::MessageAnswer::Ok;
  }
  std::optional<int> Choose(const std::string&, const std::vector<std::string>&, int) override {
    return std::nullopt;
  }
  void Beep() override { ++beeps; }

  std::vector<std::string> texts;
  int beeps = 0;
  std::function<void()> whileOpen;
};

// Records an action's calls as "started 0,4", "status 0,4 Run Test", "finished 0,4", and can run a
// function inside one. Any thread may call it.
class RecordingWatcher : public ActionWatcher {
 public:
  void ActionStarted(std::string context) override { Note("started " + context); }
  void ActionStatus(std::string context, std::string text) override {
    Note("status " + context + " " + text);
  }
  void ActionFinished(std::string context) override {
    Note("finished " + context);
    finished_.Set();
  }

  bool WaitForFinish(platform::Milliseconds timeout = 2h) { return finished_.Wait(timeout); }
  std::vector<std::string> calls() {
    const platform::PlainGuard guard(lock_);
    return calls_;
  }
  int Count(const std::string& call) {
    const std::vector<std::string> all = calls();
    return static_cast<int>(std::count(all.begin(), all.end(), call));
  }
  // Runs `hook` once, inside the next call with this text.
  void On(const std::string& call, std::function<void()> hook) {
    const platform::PlainGuard guard(lock_);
    hookCall_ = call;
    hook_ = std::move(hook);
  }

 private:
  void Note(const std::string& call) {
    std::function<void()> hook;
    {
      const platform::PlainGuard guard(lock_);
      calls_.push_back(call);
      if (call == hookCall_) hook = std::exchange(hook_, nullptr);
    }
    if (hook) hook();
  }

  platform::Event finished_{"test action finished", platform::Event::Mode::ManualReset};
  platform::PlainLock lock_{"recording watcher", 9000};
  std::vector<std::string> calls_ GUARDED_BY(lock_);
  std::string hookCall_ GUARDED_BY(lock_);
  std::function<void()> hook_ GUARDED_BY(lock_);
};

// A host, a controller and an instrument. Model "2" injects without the user's help and adds no
// offset, so a test reads the temperatures that it sets.
struct Bench {
  // `filter` may be null; it sees all bytes of the line and must outlive the bench.
  explicit Bench(char modelCode = '2', LineFilter* filter = nullptr)
      : port(WithFilter(host.ports.Add("COM1"), filter)),
        controller(port, modelCode),
        instrument(
            std::make_unique<C_RVX>("COM1", 0, controller.identification(), GetActionTable())) {
    // The instrument's own first command switches the temperature control off.
    EXPECT_TRUE(controller.WaitForCommands("TC", 1, 1min));
    controller.ForgetCommands();
    WaitForStatus();
  }

  // Waits for a status frame with the controller's present state. It waits for a poll and sends no
  // frame itself: an unrequested frame would count as the answer to a pending command.
  void WaitForStatus() {
    platform::Event event("test status");
    instrument->AddStatusEvent(&event);
    const uint64_t before = instrument->GetStatusSequence();
    while (instrument->GetStatusSequence() == before || !ShowsPresentState()) {
      ASSERT_TRUE(event.Wait(1min));
    }
    instrument->RemoveStatusEvent(&event);
  }
  bool ShowsPresentState() {
    StatusBytes shown;
    instrument->GetRawStatus(shown);
    const StatusBytes present = controller.status();
    return std::equal(shown.begin(), shown.begin() + 16, present.begin());
  }
  void SetPreconditionTime(int minutes) {
    instrument->Lock();
    instrument->configuration().fields.testRecord.preconditionTime = minutes;
    instrument->Unlock();
  }
  // Sets these times, in seconds, in the instrument's test record.
  void SetTimes(int injection, int coolDown, int rotorOn) {
    instrument->Lock();
    TestRecord& record = instrument->configuration().fields.testRecord;
    record.injectionTime = injection;
    record.coolDownTime = coolDown;
    record.rotorOnTimes[0] = rotorOn;
    instrument->Unlock();
  }
  template <class AnyAction>
  std::unique_ptr<AnyAction> Make(ActionIndex index) {
    return std::unique_ptr<AnyAction>(
        dynamic_cast<AnyAction*>(instrument->CreateActionByIndex(index)));
  }
  // The tags of the commands that the controller received, joined by blanks.
  std::string Heard() {
    std::string tags;
    for (const std::string& text : controller.commands()) {
      tags += (tags.empty() ? "" : " ") + text.substr(2, 2);
    }
    return tags;
  }

  static FakePort& WithFilter(FakePort& port, LineFilter* filter) {
    port.SetFilter(filter);
    return port;
  }

  FakeHost host;
  PromptCounter prompts;
  FakePort& port;
  ScriptedController controller;
  std::unique_ptr<C_RVX> instrument;
};

// Runs a sequencer on the test's own thread.
template <class Machine>
struct Driver {
  template <class... Arguments>
  explicit Driver(Bench& ownBench, Arguments&&... arguments)
      : bench(ownBench),
        record(*ownBench.instrument, nullptr, &watcher, "0,4", 0, 4),
        machine(record, std::forward<Arguments>(arguments)...) {}

  // Steps until `condition` holds, the run has ended or `limit` has passed; true if the condition
  // holds. An ActionException ends the run and is kept in `failure`.
  bool RunUntil(const std::function<bool()>& condition, platform::Milliseconds limit = 2h) {
    const platform::Deadline deadline = platform::Deadline::After(limit);
    try {
      while (!condition()) {
        if (machine.Step() == 0) {
          ended = true;
          return condition();
        }
        if (machine.HasProgressed()) continue;
        if (deadline.HasPassed()) return false;
        platform::WaitForAny({&machine.wakeEvent()},
                             platform::Deadline::Earliest(deadline, machine.NextDeadline()));
      }
      return true;
    } catch (ActionException* raised) {
      failure = raised->GetRecord();
      delete raised;
      return condition();
    }
  }
  void Run() {
    RunUntil([] { return false; });
  }
  // Waits until the instrument has the controller's present state, and lets the sequencer act on
  // it.
  void Show() {
    bench.WaitForStatus();
    StepOut();
  }
  // Steps until the sequencer waits or has ended.
  void StepOut() {
    do {
      if (machine.Step() == 0) ended = true;
    } while (!ended && machine.HasProgressed());
  }

  Bench& bench;
  RecordingWatcher watcher;
  LaunchRecord record;
  Machine machine;
  bool ended = false;
  std::optional<ActionErrorRecord> failure;
};

}  // namespace rvx
