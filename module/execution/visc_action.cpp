#include "module/execution/visc_action.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "boundary/standards_text.h"
#include "module/calibration/standards_map.h"
#include "module/execution/context.h"
#include "module/execution/sample_action_editor.h"
#include "module/execution/visc_run.h"
#include "module/instrument/c_rvx.h"
#include "module/resources/string_ids.h"
#include "module/resources/string_table.h"
#include "platform/text.h"

namespace rvx {
namespace {

// The text of a temperature in the list of standards: "%.f", with a blank in it for -5.
std::string StandardTemperatureText(double temperature) {
  std::string text = platform::FormatText("%.f", temperature);
  for (const char* known : kTemperatureTexts) {
    if (platform::RemoveBlanks(known) == text) return known;
  }
  return text;
}

}  // namespace

C_RVXViscAction::C_RVXViscAction(C_RVX& instrument, int labelId)
    : CBaseAction(instrument, labelId) {
  // Not configured before an edit, a stored state or a start has given it parameters.
  configured_ = 0;
  ExecuteLoadResources(this);
}

int32_t C_RVXViscAction::LoadResources() {
  writingText_ = LoadResourceString(kTextWritingData);
  return CBaseAction::LoadResources();
}

void C_RVXViscAction::Start(ActionWatcher* watcher, const std::string& context) {
  const auto place = ParseContext(context);
  StartFailure failure = StartFailure::BadContext;
  {
    platform::RecursiveGuard guard(lock_);
    if (place) {
      tray_ = place->tray;
      position_ = place->position;
    }
    if (place && IsTrayPlace(instrument(), *place)) {
      if (launch_ != nullptr || hasRun_ != 0) {
        failure = StartFailure::Running;
      } else {
        if (configured_ == 0) ResetToInstrumentDefaults();
        failure = Launch(watcher, context, tray_, position_, "sample run",
                         platform::ThreadPriority::Normal, ViscRun::RunThread);
      }
    }
  }
  if (failure == StartFailure::None) return;
  ActionErrorRecord record = instrument().MakeErrorRecord();
  record.sampleId = GetSampleId();
  record.sampleFailure = 1;
  if (place) {
    record.tray = place->tray;
    record.position = place->position;
  }
  if (failure == StartFailure::NoThread) record.kind = 1;
  Raise(std::move(record), failure);
}

void C_RVXViscAction::RaiseForSample(StartFailure failure) {
  ActionErrorRecord record = instrument().MakeErrorRecord();
  record.sampleId = GetSampleId();
  record.sampleFailure = 1;
  Raise(std::move(record), failure);
}

int32_t C_RVXViscAction::Edit() {
  bool refused;
  bool firstEdit = false;
  {
    platform::RecursiveGuard guard(lock_);
    refused = launch_ != nullptr || hasRun_ != 0;
    if (!refused) {
      firstEdit = configured_ == 0;
      if (firstEdit) ResetToInstrumentDefaults();
    }
  }
  if (refused) RaiseForSample(StartFailure::NoThread);
  SampleActionEditor* editor = GetSampleActionEditor();
  if (editor == nullptr) return 0;
  // The instrument must not be destroyed while the dialog reads it.
  const InstrumentUse use(instrument());
  // Without the lock: the tray's thread may need it while the dialog is open.
  const bool accepted = ShowEditor(*editor, firstEdit);
  bool unwanted;
  {
    platform::RecursiveGuard guard(lock_);
    if (accepted) configured_ = 1;
    unwanted = configured_ == 0 && launch_ == nullptr;
  }
  if (unwanted) {
    const int32_t position = FindTrayPosition();
    if (position >= 0) instrument().ReleaseTrayAction(position);
  }
  GetInstrumentManager()->NotifyInstrumentChanged();
  return accepted ? 1 : 0;
}

int32_t C_RVXViscAction::FindTrayPosition() {
  TrayOfSampleActions* tray = instrument().GetTray(0);
  TrayGuard guard(*tray);
  for (int32_t i = 0; i < tray->GetSize(); ++i) {
    if (tray->GetAt(i) == this) return i;
  }
  return -1;
}

std::string C_RVXViscAction::GetStateText() {
  platform::RecursiveGuard guard(lock_);
  if (configured_ == 0) ResetToInstrumentDefaults();
  return WriteSampleActionState({sampleId_, configured_, knownViscosities_, testRecord_});
}

void C_RVXViscAction::SetStateText(const std::string& text) {
  SampleActionState state;
  bool running;
  {
    platform::RecursiveGuard guard(lock_);
    running = launch_ != nullptr;
    state = {sampleId_, configured_, knownViscosities_, testRecord_};
  }
  if (!running) {
    if (!ReadSampleActionState(text, state)) return;
    // Without the lock: it may read the standards from the host.
    ApplyStandards(state);
    platform::RecursiveGuard guard(lock_);
    running = launch_ != nullptr;
    if (!running) {
      sampleId_ = state.sampleId;
      configured_ = state.configured;
      knownViscosities_ = state.knownViscosities;
      testRecord_.Assign(state.testRecord);
    }
  }
  if (running) RaiseForSample(StartFailure::Running);
}

// A temperature at which the standard has no record keeps the stored value: a value of another
// temperature would be wrong, and would spoil a calibration that uses it.
void C_RVXViscAction::ApplyStandards(SampleActionState& state) {
  const CStandardsMap* standards = instrument().GetStandards();
  if (standards == nullptr) return;
  for (size_t i = 0; i < state.knownViscosities.size(); ++i) {
    try {
      const int32_t record = standards->FindStandardTemperature(
          state.sampleId, StandardTemperatureText(state.testRecord.testTemperatures.at(i)));
      if (record < 0) continue;
      state.knownViscosities.at(i) = standards->GetStandardViscosity(state.sampleId, record);
    } catch (InvalidException* unknown) {
      delete unknown;
      return;  // no standard of that name
    }
  }
}

int32_t C_RVXViscAction::GetRunResult() {
  platform::RecursiveGuard guard(lock_);
  return runResult_;
}

void C_RVXViscAction::ResetToInstrumentDefaults() {
  platform::RecursiveGuard guard(lock_);
  C_RVX& source = instrument();
  source.Lock();
  testRecord_.Assign(source.configuration().fields.testRecord);
  source.Unlock();
  knownViscosities_.fill(0.0);
}

void C_RVXViscAction::SetTestPoint(int index, const std::string& temperature,
                                   const std::string& viscosity, int rotorTime) {
  if (index < 0 || index >= kMaxTests) return;
  const auto test = static_cast<size_t>(index);
  platform::RecursiveGuard guard(lock_);
  if (launch_ != nullptr || hasRun_ != 0) return;  // a sample that is measured keeps its values
  testRecord_.testTemperatures.at(test) =
      platform::ParseLeadingDouble(platform::RemoveBlanks(temperature));
  knownViscosities_.at(test) = platform::ParseLeadingDouble(viscosity);
  testRecord_.testCount = index + 1;
  if (rotorTime > -1) testRecord_.rotorOnTimes.at(test) = rotorTime;
  configured_ = 1;
}

bool C_RVXViscAction::AssignTests(const TestRecord& tests,
                                  const std::array<double, kMaxTests>& knownViscosities) {
  platform::RecursiveGuard guard(lock_);
  if (launch_ != nullptr || hasRun_ != 0) return false;
  testRecord_.Assign(tests);
  testRecord_.testCount = std::clamp(testRecord_.testCount, 0, kMaxTests);
  knownViscosities_ = knownViscosities;
  configured_ = 1;
  return true;
}

TestRecord C_RVXViscAction::CopyTestRecord() {
  platform::RecursiveGuard guard(lock_);
  return testRecord_;
}

std::array<double, kMaxTests> C_RVXViscAction::CopyKnownViscosities() {
  platform::RecursiveGuard guard(lock_);
  return knownViscosities_;
}

}  // namespace rvx
