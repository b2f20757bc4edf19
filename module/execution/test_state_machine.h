// One test of one sample: one temperature, one rotor ON time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "module/execution/sequencer.h"
#include "module/instrument/test_record.h"

namespace rvx {

// Tells the instrument to start, follows its operations while it works by itself, gathers the speed
// and temperature of the Run Test operation, ends the run, and waits until the instrument is idle.
class CTestStateMachine final : public Sequencer {
 public:
  // `test` and `launch` must outlive it. `testIndex`: the test of the record, from 0.
  CTestStateMachine(LaunchRecord& launch, TestRecord& test, int testIndex);
  ~CTestStateMachine() override { Detach(); }

  // The readings of the run, one for each int count of Run Test: twice the rotor ON time in
  // seconds. Readings that are missing because the run ended early are 0.0. Null until the run is
  // over.
  const std::vector<double>* GetSpeeds() const;        // rpm/1000
  const std::vector<double>* GetTemperatures() const;  // degrees C

  int32_t LoadResources() override;

 private:
  enum class State {
    Start,              // sends CST: AwaitReply; fails if the instrument is not idle
    AwaitReply,         // for "ST": AwaitOperation; for "UA": AwaitInjectionEnd; overdue:
                        // AwaitRun while the instrument still prompts, else an abort and the state
                        // that sends the command again; fails when no re-send is left
    AwaitOperation,     // for any operation: AwaitRun. No time limit
    AwaitPromptAnswer,  // for the user's OK: AwaitReply
    AwaitInjectionEnd,  // for the prompt to fall, or overdue: AwaitRun
    AwaitRun,           // for Run Test: Collect; for the prompt: AwaitPromptAnswer. No time limit
    Collect,            // readings until all are in or the instrument is idle: AwaitIdle
    AwaitIdle           // for no operation: the end
  };

  void SetState(State state);
  int32_t Act() override;
  platform::Deadline StateDeadline() const override;
  void EnterStart() override { SetState(State::Start); }
  void EnterEnd() override { SetState(State::AwaitIdle); }
  void CompleteFailure(ActionErrorRecord& record) override;

  void StartTest();
  void AwaitReply();
  void AwaitOperation();
  void AwaitInjectionEnd();
  void AwaitRun();
  void PromptForInjection();
  void Collect();
  bool IsInjecting() const;
  bool IsPrompting() const { return status_.promptFlag != 0; }

  TestRecord& test_;
  const int testIndex_;
  std::string promptText_;

  State state_ = State::Start;
  State returnState_ = State::Start;  // where a re-send goes on
  bool manualInjection_ = false;      // as of the present Step
  bool promptAnswered_ = false;
  bool abortedAcknowledge_ = false;  // CAB was sent because an acknowledgement had no reply
  // Whether the prompt was shown. On a model that injects by itself it is never cleared, so a stray
  // prompt flag shows no prompt.
  bool prompted_ = true;

  std::vector<double> temperatures_;
  std::vector<double> speeds_;
  size_t readingIndex_ = 0;  // next free entry
  uint16_t lastCount_ = 0;   // int count of the last reading
  bool readingsComplete_ = false;
};

}  // namespace rvx
