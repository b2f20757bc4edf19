#include "module/execution/visc_run.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "module/execution/sample_result.h"
#include "module/execution/test_state_machine.h"
#include "module/execution/visc_action.h"
#include "module/instrument/c_rvx.h"

namespace rvx {
namespace {

constexpr int32_t kNoRotorTime = -1;

std::string GetOperatorName() {
  std::string name;
  GetSecurityManager()->GetUserName(name);
  return name;
}

}  // namespace

void ViscRun::RunThread(LaunchRecord& record) {
  ViscRun run(record);
  bool ok = true;
  bool stopped = false;
  try {
    stopped = !run.Begin() || !run.RunTests();
  } catch (CViscoException* failure) {
    // The remaining tests are dropped.
    C_RVX::ReportError(failure->GetRecord());
    delete failure;
    ok = false;
  }
  // The stop has detached the action and told the watcher.
  if (!stopped) run.Finish(ok);
  record.instrument.SetRotorTime(kNoRotorTime);
}

C_RVXViscAction* ViscRun::GetAction() { return static_cast<C_RVXViscAction*>(record_.action); }

bool ViscRun::Begin() {
  platform::RecursiveGuard guard(record_.lock);
  record_.ReportStarted();
  C_RVXViscAction* action = GetAction();
  if (action == nullptr) return false;
  platform::RecursiveGuard actionGuard(action->lock_);
  action->runResult_ = 0;
  test_.Assign(action->testRecord_);
  knownViscosities_ = action->knownViscosities_;
  writingText_ = action->writingText_;
  return true;
}

bool ViscRun::RunTests() {
  const int count = std::min(test_.testCount, kMaxTests);
  for (int i = 0; i < count; ++i) {
    if (!RunTest(i)) return false;
  }
  return true;
}

bool ViscRun::RunTest(int index) {
  CTestStateMachine sequencer(record_, test_, index);
  record_.instrument.SetRotorTime(test_.rotorOnTimes.at(static_cast<size_t>(index)));
  if (RunSequencer(sequencer, record_) == SequencerEnd::Finished && StoreResult(sequencer, index)) {
    return true;
  }
  sequencer.AbortRun();
  return false;
}

// Holds the record's lock from the first access to the action to the end of the storing, so that a
// stop comes either before or after a whole sample. If the stop came before, nothing is stored; a
// stop that comes later waits.
bool ViscRun::StoreResult(const CTestStateMachine& sequencer, int index) {
  std::optional<ActionErrorRecord> failure;
  {
    platform::RecursiveGuard guard(record_.lock);
    C_RVXViscAction* action = GetAction();
    if (action == nullptr) return false;
    Sample sample;
    // Before the watcher is called: it may stop or destroy the action from inside, and the sample
    // is stored all the same.
    const ActionFacts facts = ReadFacts(*action);
    record_.ReportStatus(writingText_);
    FillIdentity(sample, facts, index);
    CountSample();
    const std::vector<double>& speeds = *sequencer.GetSpeeds();
    const std::vector<double>& temperatures = *sequencer.GetTemperatures();
    if (facts.csvFlag != 0) WriteReadings(facts, index, speeds, temperatures);
    FillResult(sample, speeds, temperatures);
    action = GetAction();
    if (action != nullptr) action->SampleComplete(sample, record_.instrument.configuration());
    try {
      GetSampleArchive()->StoreSample(sample);
    } catch (ArchiveException* refused) {
      failure = refused->GetRecord();
      delete refused;
      failure->sampleId = sample.sampleId;
    }
    // Still under the record's lock: a stop that waits for it must find a run that has ended, or
    // the tray would run the sample again.
    const bool isLast = index + 1 == std::min(test_.testCount, kMaxTests);
    if (isLast) MarkAsRun(true);
  }
  if (failure) {
    ActionErrorRecord report = record_.instrument.MakeErrorRecord();
    report.message = failure->message;
    report.code = failure->code;
    report.kind = failure->kind;
    report.sampleId = failure->sampleId;
    report.tray = record_.tray + 1;
    report.position = record_.position + 1;
    report.sampleFailure = 1;
    C_RVX::ReportError(report);
  }
  return true;
}

ViscRun::ActionFacts ViscRun::ReadFacts(C_RVXViscAction& action) {
  platform::RecursiveGuard guard(action.lock_);
  return {action.sampleId_, action.testRecord_.csvFlag, action.testRecord_.saveLocation};
}

void ViscRun::FillIdentity(Sample& sample, const ActionFacts& facts, int index) {
  C_RVX& instrument = record_.instrument;
  const auto test = static_cast<size_t>(index);
  sample.sampleId = facts.sampleId;
  sample.operatorName = GetOperatorName();
  sample.typeName = instrument.GetTypeName();
  sample.instrument = instrument.GetInstrumentId();
  instrument.Lock();
  sample.probeId = instrument.configuration().fields.probeId;
  sample.serialNumber = instrument.configuration().fields.serialNumber;
  instrument.Unlock();
  sample.tray = static_cast<uint16_t>(record_.tray + 1);
  sample.position = static_cast<uint16_t>(record_.position + 1);
  sample.knownViscosity = kModuleMark;
  sample.constants.at(kConstantKnownViscosity) = knownViscosities_.at(test);
  sample.constants.at(kConstantTestTemperature) = test_.testTemperatures.at(test);
  sample.constants.at(kConstantRotorOnTime) = test_.rotorOnTimes.at(test);
}

void ViscRun::CountSample() {
  C_RVX& instrument = record_.instrument;
  instrument.Lock();
  int32_t& samples = instrument.configuration().fields.samplesSinceCheck;
  if (samples < INT32_MAX) ++samples;
  instrument.Unlock();
}

// The constants are those of the measured temperature, not of the requested one.
void ViscRun::FillResult(Sample& sample, const std::vector<double>& speeds,
                         const std::vector<double>& temperatures) {
  const RunAverages averages = AverageRun(speeds, temperatures, test_.averagingCount);
  sample.speed = averages.speed;
  sample.averageTemperature = averages.temperature;
  sample.constants.at(kConstantAveragingCount) = averages.count;
  std::copy(averages.speeds.begin(), averages.speeds.end(),
            sample.constants.begin() + kConstantFirstSpeed);
  C_RVX& instrument = record_.instrument;
  double& b0 = sample.constants.at(kConstantB0);
  double& b1 = sample.constants.at(kConstantB1);
  double& b2 = sample.constants.at(kConstantB2);
  instrument.GetCellConstants(averages.temperature, b0, b1, b2);
  if (instrument.HasCellConstants(averages.temperature)) {
    sample.viscosity = CalculateViscosity(b0, b1, b2, averages.speed);
  }
}

void ViscRun::WriteReadings(const ActionFacts& facts, int index, const std::vector<double>& speeds,
                            const std::vector<double>& temperatures) {
  const double temperature = test_.testTemperatures.at(static_cast<size_t>(index));
  WriteCsvFile(
      facts.saveLocation + GetCsvFileName(facts.sampleId, temperature, platform::LocalNow()),
      MakeCsvText(speeds, temperatures));
}

void ViscRun::Finish(bool ok) {
  platform::RecursiveGuard guard(record_.lock);
  MarkAsRun(ok);
  CBaseAction::FinishRun(record_);
}

void ViscRun::MarkAsRun(bool ok) {
  C_RVXViscAction* action = GetAction();
  if (action == nullptr) return;
  platform::RecursiveGuard guard(action->lock_);
  action->hasRun_ = 1;
  if (ok) action->runResult_ = 1;
}

}  // namespace rvx
