#include "module/execution/base_action.h"

#include <system_error>
#include <utility>

#include "module/instrument/c_rvx.h"
#include "module/instrument/watcher_call.h"
#include "module/resources/string_ids.h"
#include "module/resources/string_table.h"

namespace rvx {
namespace {

std::string InsertName(std::string text, const std::string& name) {
  const size_t place = text.find("%s");
  if (place != std::string::npos) text.replace(place, 2, name);
  return text;
}

void TellFinished(LaunchRecord& record, ActionWatcher& watcher) {
  CallWatcher(&record.instrument, "ActionFinished",
              [&] { watcher.ActionFinished(record.context); });
}

}  // namespace

CBaseAction::CBaseAction(C_RVX& instrument, int labelId)
    : instrument_(instrument), labelId_(labelId) {
  ExecuteLoadResources(this);
}

CBaseAction::~CBaseAction() { StopRun(); }

int32_t CBaseAction::LoadResources() {
  invalidContextText_ = LoadResourceString(kTextInvalidContext);
  runningText_ = LoadResourceString(kTextActionRunning);
  computerErrorText_ = LoadResourceString(kTextComputerError);
  label_ = LoadResourceString(labelId_);
  return 0;
}

CBaseAction::StartFailure CBaseAction::Launch(ActionWatcher* watcher, const std::string& context,
                                              int tray, int position, const char* threadName,
                                              platform::ThreadPriority priority,
                                              const RunFunction& run, RunKind kind) {
  if (launch_ != nullptr) return StartFailure::Running;
  auto record =
      std::make_shared<LaunchRecord>(instrument_, this, watcher, context, tray, position, kind);
  // Made here and not on the thread, so that the instrument can't be destroyed before the thread
  // begins; it is released with the thread's function.
  auto use = std::make_shared<InstrumentUse>(instrument_);
  launch_ = record;
  try {
    platform::StartThread(
        threadName,
        [record, use = std::move(use), run] {
          use->NoteOwnThread();
          run(*record);
        },
        priority);
  } catch (const std::system_error&) {
    launch_.reset();
    return StartFailure::NoThread;
  }
  return StartFailure::None;
}

void CBaseAction::Raise(ActionErrorRecord record, StartFailure failure) {
  switch (failure) {
    case StartFailure::None:
      break;
    case StartFailure::Running:
      record.message = InsertName(runningText_, GetClassName());
      record.code = MessageCode::ActionRunning;
      break;
    case StartFailure::BadContext:
      record.message = InsertName(invalidContextText_, GetClassName());
      record.code = MessageCode::InvalidContext;
      break;
    case StartFailure::NoThread:
      record.message = InsertName(computerErrorText_, GetClassName());
      record.code = MessageCode::ComputerError;
      break;
  }
  throw new ActionException(std::move(record));
}

void CBaseAction::Stop() { StopRun(); }

void CBaseAction::StopRun() {
  std::shared_ptr<LaunchRecord> launch;
  {
    platform::RecursiveGuard guard(lock_);
    launch = launch_;
  }
  if (launch == nullptr) return;
  ActionWatcher* watcher;
  {
    // The thread that takes the watcher out of the record, a stopping one or the run's, tells it of
    // the end, so the watcher is told once. The record's lock ranks below the action's, so the two
    // locks are taken one after the other.
    platform::RecursiveGuard guard(launch->lock);
    watcher = std::exchange(launch->watcher, nullptr);
    const bool runs = std::exchange(launch->action, nullptr) != nullptr;
    launch->stopped = true;
    if (launch->kind == RunKind::Screen) {
      launch->motion.End();
    } else if (runs) {
      instrument_.SendAbort(nullptr);
    }
  }
  launch->stopEvent.Set();
  {
    platform::RecursiveGuard guard(lock_);
    if (launch_ == launch) launch_.reset();
  }
  if (watcher != nullptr) TellFinished(*launch, *watcher);
}

void CBaseAction::FinishRun(LaunchRecord& record) {
  platform::RecursiveGuard guard(record.lock);
  ActionWatcher* watcher = std::exchange(record.watcher, nullptr);
  if (watcher != nullptr) TellFinished(record, *watcher);
  CBaseAction* action = std::exchange(record.action, nullptr);
  if (action == nullptr) return;
  platform::RecursiveGuard actionGuard(action->lock_);
  if (action->launch_.get() == &record) action->launch_.reset();
}

int32_t CBaseAction::IsConfigured() {
  platform::RecursiveGuard guard(lock_);
  return configured_;
}

int32_t CBaseAction::HasRun() {
  platform::RecursiveGuard guard(lock_);
  return hasRun_;
}

std::string CBaseAction::GetSampleId() {
  platform::RecursiveGuard guard(lock_);
  return sampleId_;
}

int32_t CBaseAction::IsRunning() {
  platform::RecursiveGuard guard(lock_);
  return launch_ != nullptr ? 1 : 0;
}

void CBaseAction::SetSampleId(const std::string& text) {
  platform::RecursiveGuard guard(lock_);
  sampleId_ = text;
}

}  // namespace rvx
