#include "host/core/tray_runner.h"

#include <memory>
#include <utility>
#include <vector>

#include "boundary/action_keys.h"
#include "host/core/host.h"
#include "platform/log.h"

namespace torvell {
namespace {

// Describes the tray for the journal. The actions are asked without the tray's lock, since some of
// the answers need other locks of the module.
TrayPlan MakePlan(const InstrumentEntry& entry) {
  TrayPlan plan;
  plan.archiveKey = entry.identity.archiveKey;
  plan.serialNumber = entry.identity.serialNumber;
  plan.simulated = entry.identity.simulated;
  plan.instrumentId = entry.instrument->GetInstrumentId();
  plan.instrument = entry.instrument;
  std::vector<std::shared_ptr<rvx::Action>> actions;
  rvx::TrayOfSampleActions* tray = entry.instrument->GetTray(0);
  {
    rvx::TrayGuard guard(*tray);
    for (int32_t i = 0; i < tray->GetSize(); ++i) actions.push_back(tray->Hold(i));
  }
  for (size_t i = 0; i < actions.size(); ++i) {
    rvx::Action& action = *actions[i];
    if (action.GetClassName() == rvx::kNullActionClassKey) continue;
    TrayPlan::Position position;
    position.position = static_cast<int32_t>(i);
    position.classKey = action.GetClassName();
    position.sampleId = action.GetSampleId();
    if (entry.scripting != nullptr) {
      const auto tests = entry.scripting->GetSampleTests(action);
      if (tests) position.tests = static_cast<int32_t>(tests->tests.size());
    }
    plan.positions.push_back(std::move(position));
  }
  return plan;
}

}  // namespace

TrayRunner::TrayRunner(Host& host, const InstrumentEntry& entry, TrayListener* listener)
    : host_(host),
      entry_(entry),
      listener_(listener),
      finished_(std::make_shared<platform::Event>("tray is finished",
                                                  platform::Event::Mode::ManualReset)) {}

TrayRunner::~TrayRunner() {
  if (run_ == 0) return;
  finished_->Wait();
  host_.samples().RemoveListener(this);
  host_.errors().RemoveListener(this);
}

bool TrayRunner::HasFinished() const {
  platform::PlainGuard guard(lock_);
  return over_;
}

void TrayRunner::Start() {
  StoreTray();
  const int64_t run = host_.journal().Begin(MakePlan(entry_));
  run_ = run;
  host_.samples().AddListener(this);
  host_.errors().AddListener(this);
  std::string failure;
  try {
    entry_.instrument->StartTray(this);
    return;
  } catch (rvx::CViscoException* raised) {
    failure = raised->GetRecord().message;
    delete raised;
  }
  run_ = 0;
  host_.samples().RemoveListener(this);
  host_.errors().RemoveListener(this);
  host_.journal().End(run, "not started");
  throw HostError(HostErrorKind::Tray, failure);
}

// Stores the present tray, so that the next start finds it if this host is killed. HostError
// Database.
void TrayRunner::StoreTray() {
  std::string failure;
  try {
    host_.instrumentTexts().StoreInstrument(entry_.identity.archiveKey, entry_.instrument);
    return;
  } catch (rvx::ArchiveException* raised) {
    failure = raised->GetRecord().message;
    delete raised;
  }
  throw HostError(HostErrorKind::Database, failure);
}

void TrayRunner::TrayStarted(int32_t) {
  if (listener_ != nullptr) listener_->TrayStarted();
}

void TrayRunner::TrayFinished(int32_t) {
  // The module has emptied the tray; if the host is killed now, the next start must not find the
  // old one. A failure is only logged, since the journal closes the run anyway.
  try {
    StoreTray();
  } catch (const HostError& error) {
    platform::Log(platform::LogLevel::Error, error.what());
  }
  host_.journal().End(run_, "ended");
  {
    platform::PlainGuard guard(lock_);
    over_ = true;
  }
  const std::shared_ptr<platform::Event> finished = finished_;
  if (listener_ != nullptr) listener_->TrayFinished();
  finished->Set();  // this object may be destroyed from here on
}

void TrayRunner::TrayPauseChanged(int32_t, int32_t paused) {
  if (listener_ != nullptr) listener_->PauseChanged(paused != 0);
}

void TrayRunner::SampleStarted(int32_t, int32_t position) {
  host_.journal().NoteSampleStarted(run_, position);
  if (listener_ != nullptr) listener_->SampleStarted(position);
}

void TrayRunner::SampleStatus(int32_t, int32_t position, std::string text) {
  host_.journal().NoteSampleStatus(run_, position);
  if (listener_ != nullptr) listener_->SampleStatus(position, text);
}

void TrayRunner::SampleFinished(int32_t, int32_t position) {
  host_.journal().NoteSampleFinished(run_, position);
  if (listener_ != nullptr) listener_->SampleFinished(position);
}

void TrayRunner::SampleStored(const rvx::Sample& sample, const SampleOrigin& origin) {
  if (origin.run != run_ || listener_ == nullptr) return;
  listener_->SampleStored(origin.position, StoredSample{sample, origin.simulated});
}

void TrayRunner::ErrorReported(const ErrorReport& report) {
  if (report.instrument != entry_.instrument || listener_ == nullptr || HasFinished()) return;
  listener_->ErrorReported(report);
}

}  // namespace torvell
