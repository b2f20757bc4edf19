#include "tests/simulation/operators.h"

#include <fmt/format.h>

#include "boundary/exceptions.h"
#include "tests/simulation/expected_result.h"
#include "tests/support/unseen_guard.h"

namespace rvx::soak {

using platform::Deadline;
using platform::Milliseconds;
using namespace std::chrono_literals;

namespace {

constexpr PlannedTest kOwnTest{-20.0, 6};
// A deed inside a watcher's call changes no position of the tray.
constexpr int kNoPosition = -1;

// Watches an action that an operator started outside the tray.
class OwnWatcher : public ActionWatcher {
 public:
  OwnWatcher(Observer& observer, HostFaults& host) : observer_(observer), host_(host) {}
  void ActionStarted(std::string /*context*/) override {
    {
      const UnseenGuard guard(lock_);
      observer_.Require(!closed_ && finished_ == 0 && ++started_ == 1, "ActionStarted out of turn");
    }
    host_.MayThrow();
  }
  void ActionStatus(std::string /*context*/, std::string /*text*/) override {
    {
      const UnseenGuard guard(lock_);
      observer_.Require(!closed_, "ActionStatus behind the end of an action");
    }
    host_.MayThrow();
  }
  void ActionFinished(std::string /*context*/) override {
    {
      const UnseenGuard guard(lock_);
      observer_.Require(!closed_ && ++finished_ == 1, "ActionFinished out of turn");
    }
    finishedEvent_.Set();
    host_.MayThrow();
  }
  // Called after Stop: the end must have been reported once, and no call may come any more.
  void Close() {
    const UnseenGuard guard(lock_);
    observer_.Require(finished_ == 1, "an action ended without ActionFinished");
    closed_ = true;
  }
  platform::Event& finished() { return finishedEvent_; }

 private:
  Observer& observer_;
  HostFaults& host_;
  platform::Event finishedEvent_{"soak: own action finished"};
  platform::PlainLock lock_{"soak own watcher", platform::kLeafRank};
  int started_ GUARDED_BY(lock_) = 0;
  int finished_ GUARDED_BY(lock_) = 0;
  bool closed_ GUARDED_BY(lock_) = false;
};

}  // namespace

// A client of one command. The record of its calls outlives it.
struct Desk::Client : public CommandClient {
  Client(C_RVX* instrument, Observer& observer, int number)
      : CommandClient(instrument), observer_(observer), number_(number) {}
  ~Client() override {
    Detach();
    observer_.ClientGone(number_);
  }
  void CommandReply(const std::string& tag) override { observer_.ClientCalled(number_, tag); }

 private:
  Observer& observer_;
  const int number_;
};

Desk::Desk(const Scenario& scenario, Observer& observer, HostFaults& host, FaultyLine& line)
    : scenario_(scenario), observer_(observer), host_(host), line_(line) {
  host_.callBack = [this](OperatorDeed deed) {
    OperatorStep step;
    step.deed = deed;
    step.position = kNoPosition;
    Do(step, 0);
  };
}

std::string Desk::NextName(const char* kind) { return fmt::format("{} {}", kind, ++names_); }

bool Desk::IsRunOpen() {
  return observer_.IsRunOpen() && line_.IsBusy() && instrument_->GetSwitchByte() != 0;
}

// --- The tray -----------------------------------------------------------------------------------

std::unique_ptr<C_RVXViscAction> Desk::MakeSample(const PlannedSample& plan) {
  const int index = plan.verifies ? kCheckViscAction : kMeasureViscAction;
  std::unique_ptr<C_RVXViscAction> action(
      dynamic_cast<C_RVXViscAction*>(instrument_->CreateActionByIndex(index)));
  TestRecord record = action->CopyTestRecord();
  std::array<double, kMaxTests> known{};
  if (plan.verifies) known.fill(kKnownViscosity);
  record.injectionTime = scenario_.injectionTime;
  record.coolDownTime = scenario_.coolDownTime;
  record.testCount = static_cast<int32_t>(plan.tests.size());
  for (size_t i = 0; i < plan.tests.size(); ++i) {
    record.testTemperatures.at(i) = plan.tests[i].temperature;
    record.rotorOnTimes.at(i) = plan.tests[i].rotorTime;
  }
  action->AssignTests(record, known);
  const std::string name = NextName("oil");
  action->SetSampleId(name);
  observer_.SampleMade(name, plan);
  return action;
}

void Desk::Fill(const std::vector<PlannedSample>& samples) {
  observer_.TrayEdited();
  for (const PlannedSample& plan : samples) {
    std::shared_ptr<Action> action = MakeSample(plan);
    std::shared_ptr<Action> removed;
    TrayOfSampleActions* tray = instrument_->GetTray(0);
    {
      const TrayGuard guard(*tray);
      if (plan.position < tray->GetSize()) {
        removed = tray->Replace(plan.position, std::move(action));
      }
    }
    if (removed) removed->Stop();
  }
}

void Desk::Clear() {
  const auto emptied = instrument_->EmptyTray(instrument_->MakeEmptyTray());
  for (const std::shared_ptr<Action>& removed : emptied) removed->Stop();
}

TrayRecord* Desk::Start() {
  TrayRecord* record = observer_.MakeWatcher();
  std::map<int32_t, std::string> samples;
  const int edits = observer_.edits();
  TrayOfSampleActions* tray = instrument_->GetTray(0);
  {
    const TrayGuard guard(*tray);
    for (int32_t position = 0; position < tray->GetSize(); ++position) {
      Action& action = *tray->GetAt(position);
      if (action.GetClassName() != kNullActionClassKey) samples[position] = action.GetSampleId();
    }
  }
  record->Expect(samples, edits);
  record->inside = [this](TrayRecord&) { host_.InsideWatcher(); };
  try {
    instrument_->StartTray(record);
    return record;
  } catch (ActionException* refused) {
    observer_.Note("start refused: " + refused->GetRecord().message);
    delete refused;
    record->Refused();
    return nullptr;
  }
}

void Desk::Abort() {
  const bool wasOpen = IsRunOpen();
  if (instrument_->QueryAbortTray() == 1 && wasOpen) observer_.RunEnded();
}

void Desk::Resume() {
  if (instrument_->IsTrayPaused() == 0) return;
  if (instrument_->GetSwitchByte() != 0) instrument_->SendAbort(nullptr);
  instrument_->ResumeTray(0);
}

// --- The operators ------------------------------------------------------------------------------

void Desk::Come() {
  leave_.Reset();
  for (size_t who = 0; who < 2; ++who) {
    if (scenario_.steps[who].empty()) continue;
    people_.push_back(
        platform::StartThread(fmt::format("operator {}", who + 1), [this, who] { Work(who); }));
  }
}

void Desk::Leave() {
  leave_.Set();
  for (const auto& person : people_) person->Join();
  people_.clear();
}

void Desk::Work(size_t who) {
  const platform::Microseconds begin = platform::MonotonicTime();
  for (const OperatorStep& step : scenario_.steps[who]) {
    if (leave_.Wait(Deadline::At(begin + step.at))) return;
    Do(step, who);
  }
}

void Desk::Do(const OperatorStep& step, size_t who) {
  constexpr const char* kNames[] = {
      "starts",   "pauses now", "pauses shortly", "pauses behind", "asks to pause",
      "resumes",  "aborts",     "renames",        "replaces",      "reloads",
      "commands", "moves",      "measures"};
  observer_.Note(fmt::format("operator {} {}", who + 1, kNames[static_cast<size_t>(step.deed)]));
  platform::OpenScheduleWindow();
  switch (step.deed) {
    case OperatorDeed::Start:
      if (step.position != kNoPosition && instrument_->IsTrayRunning() == 0) Replace(step.position);
      Start();
      return;
    case OperatorDeed::PauseShortly:
      instrument_->PauseTray(0, 1);
      leave_.Wait(step.lasts / 10);
      instrument_->ContinueTray();
      return;
    case OperatorDeed::PauseNow:
      instrument_->PauseTray(0, 1);
      return;
    case OperatorDeed::PauseAfter:
      instrument_->PauseTray(0, 0);
      return;
    case OperatorDeed::QueryPause:
      instrument_->QueryPauseTray();
      return;
    case OperatorDeed::Resume:
      instrument_->ContinueTray();
      return;
    case OperatorDeed::Abort:
      Abort();
      return;
    case OperatorDeed::Rename:
      Rename(step.position);
      return;
    case OperatorDeed::Replace:
      Replace(step.position);
      return;
    case OperatorDeed::Reload:
      // Reloading reads the standards, which only one thread may do.
      if (who == 0) Reload();
      return;
    case OperatorDeed::Command:
      Command(who, step.lasts);
      return;
    case OperatorDeed::OwnMove:
      RunOwn(std::unique_ptr<Action>(instrument_->CreateActionByIndex(kMoveStepperAction)), step);
      return;
    case OperatorDeed::OwnMeasurement:
      RunOwn(MakeSample({step.position, false, {kOwnTest}}), step);
      return;
  }
}

void Desk::Rename(int position) {
  TrayOfSampleActions* tray = instrument_->GetTray(0);
  std::shared_ptr<Action> action;
  {
    const TrayGuard guard(*tray);
    if (position < tray->GetSize()) action = tray->Hold(position);
  }
  if (!action || action->GetClassName() == kNullActionClassKey) return;
  const std::string name = NextName("renamed");
  observer_.SampleRenamed(action->GetSampleId(), name);
  action->SetSampleId(name);
}

void Desk::Replace(int position) { Fill({{position, false, {kOwnTest}}}); }

void Desk::Reload() {
  observer_.TrayEdited();
  const bool ran = instrument_->IsTrayRunning() != 0;
  const bool wasOpen = IsRunOpen();
  instrument_->LoadSettingsText(instrument_->SaveSettingsText(), kLoadAll);
  observer_.TrayReloaded();
  if (ran && wasOpen && instrument_->IsTrayRunning() == 0) observer_.RunEnded();
}

void Desk::Command(size_t who, Milliseconds lives) {
  const int number = observer_.CommandMade(static_cast<int>(who));
  Client client(instrument_, observer_, number);
  instrument_->SetSerialNumber(fmt::format("S{:06}", number), &client);
  leave_.Wait(lives);
}

void Desk::RunOwn(std::unique_ptr<Action> action, const OperatorStep& step) {
  // One run at a time: a status does not tell to which run it belongs.
  if (instrument_->IsTrayRunning() != 0 || ownRuns_.exchange(true)) return;
  observer_.OwnRunStarted();
  OwnWatcher watcher(observer_, host_);
  try {
    action->Start(&watcher, fmt::format("0,{}", step.position));
  } catch (CViscoException* refused) {
    delete refused;
    ownRuns_ = false;
    return;
  }
  platform::WaitForAny({&watcher.finished(), &leave_}, Deadline::After(step.lasts * 10));
  action->Stop();
  watcher.Close();
  ownRuns_ = false;
}

}  // namespace rvx::soak
