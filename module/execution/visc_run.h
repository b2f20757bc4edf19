// The run of a sample action, on its own thread.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "module/execution/launch_record.h"
#include "module/instrument/test_record.h"

namespace rvx {

class C_RVXViscAction;
class CTestStateMachine;
struct Sample;

// Takes the tests of the action in order: carries each out, calculates its viscosity, stores its
// sample. Works on copies of the action's parameters, since the action may be deleted at any
// moment.
class ViscRun {
 public:
  // The thread of one run.
  static void RunThread(LaunchRecord& record);

 private:
  explicit ViscRun(LaunchRecord& record) : record_(record) {}
  // What is read from the action when its sample is written.
  struct ActionFacts {
    std::string sampleId;
    int csvFlag = 0;
    std::string saveLocation;
  };

  // Returns false if the action was stopped.
  bool Begin();
  bool RunTests();
  bool RunTest(int index);
  bool StoreResult(const CTestStateMachine& sequencer, int index);
  // Notes in the action, if it still exists, that it has run.
  void MarkAsRun(bool ok) REQUIRES(record_.lock);
  void Finish(bool ok);

  C_RVXViscAction* GetAction() REQUIRES(record_.lock);
  ActionFacts ReadFacts(C_RVXViscAction& action);
  void FillIdentity(Sample& sample, const ActionFacts& facts, int index);
  void CountSample();
  void FillResult(Sample& sample, const std::vector<double>& speeds,
                  const std::vector<double>& temperatures);
  void WriteReadings(const ActionFacts& facts, int index, const std::vector<double>& speeds,
                     const std::vector<double>& temperatures);

  LaunchRecord& record_;
  TestRecord test_;
  std::array<double, kMaxTests> knownViscosities_{};  // mPa*s
  std::string writingText_;
};

}  // namespace rvx
