#include "module/execution/test_state_machine.h"

#include <algorithm>

#include "module/execution/base_action.h"
#include "module/protocol/frames.h"
#include "module/protocol/status_record.h"
#include "module/resources/string_ids.h"
#include "module/resources/string_table.h"
#include "platform/prompt.h"

namespace rvx {
namespace {

constexpr uint8_t kRunTestOperation = static_cast<uint8_t>(Operation::RunTest);
constexpr int kReadingsPerSecond = 2;  // the rate of the int count
// The protocol has one byte for the rotor ON time; a stored text may contain any value.
constexpr int kMaxRotorTime = 65535;  // s
// The commands in the order in which a run sends them.
enum Command { kStartTestCommand = 1, kAcknowledgeCommand };

size_t CountReadings(const TestRecord& test, int testIndex) {
  const int seconds = test.rotorOnTimes.at(static_cast<size_t>(testIndex));
  return static_cast<size_t>(std::clamp(seconds, 0, kMaxRotorTime)) * kReadingsPerSecond;
}

}  // namespace

CTestStateMachine::CTestStateMachine(LaunchRecord& launch, TestRecord& test, int testIndex)
    : Sequencer(launch, kTextSampleTimeout, kTextSampleInUse),
      test_(test),
      testIndex_(testIndex),
      temperatures_(CountReadings(test, testIndex), 0.0),
      speeds_(temperatures_.size(), 0.0) {
  ExecuteLoadResources(this);
}

int32_t CTestStateMachine::LoadResources() {
  promptText_ = LoadResourceString(kTextInjectionPrompt);
  return Sequencer::LoadResources();
}

const std::vector<double>* CTestStateMachine::GetSpeeds() const {
  return readingsComplete_ ? &speeds_ : nullptr;
}

const std::vector<double>* CTestStateMachine::GetTemperatures() const {
  return readingsComplete_ ? &temperatures_ : nullptr;
}

void CTestStateMachine::SetState(State state) {
  state_ = state;
  NoteProgress();
}

platform::Deadline CTestStateMachine::StateDeadline() const {
  switch (state_) {
    case State::AwaitReply:
    case State::AwaitInjectionEnd:
      return ResponseDeadline();
    case State::Start:
    case State::AwaitOperation:
    case State::AwaitPromptAnswer:
    case State::AwaitRun:
    case State::Collect:
    case State::AwaitIdle:
      return platform::Deadline::Never();
  }
  return platform::Deadline::Never();
}

int32_t CTestStateMachine::Act() {
  manualInjection_ = instrument_.IsManualInjectionModel();
  switch (state_) {
    case State::Start:
      StartTest();
      return 1;
    case State::AwaitReply:
      AwaitReply();
      return 1;
    case State::AwaitOperation:
      AwaitOperation();
      return 1;
    case State::AwaitPromptAnswer:
      if (promptAnswered_) {
        promptAnswered_ = false;
        Tick();
        SetState(State::AwaitReply);
      }
      return 1;
    case State::AwaitInjectionEnd:
      AwaitInjectionEnd();
      return 1;
    case State::AwaitRun:
      AwaitRun();
      return 1;
    case State::Collect:
      Collect();
      return 1;
    case State::AwaitIdle:
      if (status_.operation != 0) return 1;
      SetState(State::Start);
      return 0;
  }
  return 1;
}

void CTestStateMachine::StartTest() {
  if (!ReadPresentStatus()) return;
  if (status_.operation != 0) {
    FailInUse();
    return;
  }
  TakeResponseTimeout();
  launch_.SendUnlessStopped(
      [this] { instrument_.StartTest(launch_.position, testIndex_, test_, this); });
  BeginRetries(kStartTestCommand);
  returnState_ = State::Start;
  Tick();
  SetState(State::AwaitReply);
}

void CTestStateMachine::AwaitReply() {
  if (TakeReply(kStartTestTag)) {
    EndCommand(kStartTestCommand);
    SetState(State::AwaitOperation);
    return;
  }
  // A prompt flag that is cleared counts like the tag if another frame was taken for the reply.
  const bool acknowledged =
      returnState_ == State::AwaitRun && manualInjection_ && !IsPrompting() && TakeUntaggedReply();
  if (acknowledged || IsInjecting() || TakeReply(kUserAcknowledgeTag)) {
    EndCommand(kAcknowledgeCommand);
    SetState(State::AwaitInjectionEnd);
    return;
  }
  if (!IsResponseOverdue()) return;
  if (manualInjection_ && IsPrompting()) {
    // The instrument still waits for the user: ask again.
    prompted_ = false;
    SetState(State::AwaitRun);
    return;
  }
  const int command = returnState_ == State::Start ? kStartTestCommand : kAcknowledgeCommand;
  if (!Resend(command)) return;
  abortedAcknowledge_ = command == kAcknowledgeCommand;
  SetState(returnState_);
}

// Whether the instrument has obeyed the acknowledgement although its reply is lost. An abort would
// now end a test that goes well, and the run would wait for its readings for ever.
bool CTestStateMachine::IsInjecting() const {
  constexpr auto kPrompting = static_cast<uint8_t>(Operation::LowerTube);
  return returnState_ == State::AwaitRun && manualInjection_ && !IsPrompting() &&
         status_.operation > kPrompting;
}

void CTestStateMachine::AwaitOperation() {
  if (status_.operation == 0) return;
  if (manualInjection_) prompted_ = false;
  Tick();
  SetState(State::AwaitRun);
}

void CTestStateMachine::AwaitInjectionEnd() {
  if (IsPrompting() && !IsResponseOverdue()) return;
  // A prompt flag that is set again later is a new prompt: the user's answer was to one of an
  // earlier run.
  if (manualInjection_ && !IsPrompting()) prompted_ = false;
  SetState(State::AwaitRun);
}

void CTestStateMachine::AwaitRun() {
  if (!prompted_ && IsPrompting()) {
    PromptForInjection();
    prompted_ = true;
    Tick();
    SetState(State::AwaitPromptAnswer);
  }
  // The run itself has told the instrument to abort, so no readings will come.
  if (abortedAcknowledge_ && status_.operation == 0) {
    FailNoReply();
    return;
  }
  if (status_.operation != kRunTestOperation) return;
  lastCount_ = 0;
  readingIndex_ = 0;
  SetState(State::Collect);
  Collect();
}

// Blocks the run until the user has answered or the run is stopped. A prompt that stayed open after
// its run would be shown beside that of the next one, and the user could not tell which of the two
// to answer.
void CTestStateMachine::PromptForInjection() {
  platform::Prompter& prompter = platform::GetPrompter();
  prompter.Beep();
  platform::Event* const withdrawal[] = {&launch_.stopEvent};
  prompter.ShowMessageUntil(promptText_, platform::MessageButtons::Ok,
                            platform::MessageIcon::Information, withdrawal);
  // The run may have been stopped while the prompt was open: the instrument must not begin an
  // injection then.
  TakeUntaggedReply();
  if (!launch_.SendUnlessStopped([this] { instrument_.UserAcknowledge(this); })) return;
  promptAnswered_ = true;
  abortedAcknowledge_ = false;
  EndCommand(kAcknowledgeCommand);
  BeginRetries(kAcknowledgeCommand);
  returnState_ = State::AwaitRun;
}

void CTestStateMachine::Collect() {
  if (status_.operation == 0) {
    readingsComplete_ = true;
    Tick();
    SetState(State::AwaitIdle);
    return;
  }
  if (readingIndex_ == speeds_.size()) {
    SendAbort();
    readingsComplete_ = true;
    Tick();
    SetState(State::AwaitIdle);
    return;
  }
  if (status_.intCount == lastCount_) return;
  lastCount_ = status_.intCount;
  temperatures_[readingIndex_] = status_.actualTemperature;
  speeds_[readingIndex_] = status_.rotorSpeed;
  ++readingIndex_;
  // The abort follows the last reading at once, not at the next status.
  NoteProgress();
}

void CTestStateMachine::CompleteFailure(ActionErrorRecord& record) {
  record.tray = launch_.tray + 1;
  record.position = launch_.position + 1;
  platform::RecursiveGuard guard(launch_.lock);
  if (launch_.action != nullptr) record.sampleId = launch_.action->GetSampleId();
}

}  // namespace rvx
