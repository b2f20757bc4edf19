#include "tests/support/fake_host.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>

#include "tests/support/unseen_guard.h"

namespace rvx {
namespace {

using platform::Deadline;

std::atomic<FakeHost*> installedHost{nullptr};

// The host in force, or the exception of a module without one.
FakeHost& Host() {
  FakeHost* const host = installedHost.load();
  if (host == nullptr) throw new InvalidException;
  return *host;
}

[[noreturn]] void RaiseArchiveException(const std::string& message) {
  ActionErrorRecord record;
  record.message = message;
  record.kind = 1;
  throw new ArchiveException(record);
}

}  // namespace

void FailurePlan::FailNext(int count) {
  const UnseenGuard guard(lock_);
  remaining_ = count;
}

void FailurePlan::Check(const std::string& what) {
  {
    const UnseenGuard guard(lock_);
    if (remaining_ == 0) return;
    if (remaining_ > 0) --remaining_;
  }
  RaiseArchiveException("planned failure: " + what);
}

int32_t FakeInstrumentManager::RegisterMonitor(ViscometerArrayMonitor* monitor) {
  const UnseenGuard guard(lock_);
  monitors_[nextHandle_] = monitor;
  return nextHandle_++;
}

ViscometerInstrument* FakeInstrumentManager::GetInstrument(int32_t index) {
  const UnseenGuard guard(lock_);
  if (index < 0 || static_cast<size_t>(index) >= instruments_.size()) return nullptr;
  return instruments_[static_cast<size_t>(index)];
}

void FakeInstrumentManager::ReleaseFrame(int32_t index) {
  const UnseenGuard guard(lock_);
  releasedFrames_.push_back(index);
}

std::vector<int32_t> FakeInstrumentManager::releasedFrames() {
  const UnseenGuard guard(lock_);
  return releasedFrames_;
}

void FakeInstrumentManager::ReportError(ActionException* error) {
  if (onError) onError(error->GetRecord());
  {
    const UnseenGuard guard(lock_);
    errors_.push_back(error->GetRecord());
  }
  errorReported_.Set();
}

void FakeInstrumentManager::UnregisterMonitor(int32_t handle) {
  const UnseenGuard guard(lock_);
  monitors_.erase(handle);
}

void FakeInstrumentManager::NotifyInstrumentChanged() {
  std::map<int32_t, ViscometerArrayMonitor*> monitors;
  {
    const UnseenGuard guard(lock_);
    ++notifications_;
    monitors = monitors_;
  }
  for (const auto& [handle, monitor] : monitors) monitor->InstrumentsChanged(0);
}

int32_t FakeInstrumentManager::SelectInstrument(int32_t index, int32_t /*select*/) {
  return GetInstrument(index) != nullptr ? 1 : 0;
}

void FakeInstrumentManager::SetInstruments(std::vector<ViscometerInstrument*> instruments) {
  const UnseenGuard guard(lock_);
  instruments_ = std::move(instruments);
}

std::vector<ActionErrorRecord> FakeInstrumentManager::errors() {
  const UnseenGuard guard(lock_);
  return errors_;
}

int FakeInstrumentManager::notifications() {
  const UnseenGuard guard(lock_);
  return notifications_;
}

bool FakeInstrumentManager::WaitForErrors(size_t count, platform::Milliseconds timeout) {
  const Deadline deadline = Deadline::After(timeout);
  while (errors().size() < count) {
    if (!errorReported_.Wait(deadline)) return errors().size() >= count;
  }
  return true;
}

void FakeInstrumentArchive::LoadInstrument(const std::string& key, ViscometerInstrument* instrument,
                                           int32_t flags) {
  loadFailures.Check("load of " + key);
  std::string text;
  {
    const UnseenGuard guard(lock_);
    const auto found = texts_.find(key);
    if (found != texts_.end()) text = found->second;
  }
  if (text.empty()) RaiseArchiveException("nothing is stored under " + key);
  instrument->LoadSettingsText(text, flags);
}

void FakeInstrumentArchive::StoreInstrument(const std::string& key,
                                            ViscometerInstrument* instrument) {
  storeFailures.Check("store of " + key);
  const std::string text = instrument->SaveSettingsText();
  const UnseenGuard guard(lock_);
  texts_[key] = text;
  ++stores_;
}

void FakeInstrumentArchive::SetText(const std::string& key, const std::string& text) {
  const UnseenGuard guard(lock_);
  texts_[key] = text;
}

std::string FakeInstrumentArchive::GetText(const std::string& key) {
  const UnseenGuard guard(lock_);
  const auto found = texts_.find(key);
  return found != texts_.end() ? found->second : std::string();
}

int FakeInstrumentArchive::stores() {
  const UnseenGuard guard(lock_);
  return stores_;
}

void FakeSampleArchive::QuerySamples(ArrayOfSamples& out, SampleArchiveFilter* filter) {
  queryFailures.Check("query");
  const std::string query = filter->GetQueryText();
  const ArrayOfSamples all = samples();
  for (const Sample& sample : all) {
    if (filter->AcceptSample(sample)) out.push_back(sample);
  }
  const UnseenGuard guard(lock_);
  lastQuery_ = query;
}

void FakeSampleArchive::StoreSample(const Sample& sample) {
  if (beforeStore) beforeStore(sample);
  storeFailures.Check("store of a sample");
  {
    const UnseenGuard guard(lock_);
    samples_.push_back(sample);
  }
  stored_.Set();
}

ArrayOfSamples FakeSampleArchive::samples() {
  const UnseenGuard guard(lock_);
  return samples_;
}

std::string FakeSampleArchive::lastQuery() {
  const UnseenGuard guard(lock_);
  return lastQuery_;
}

bool FakeSampleArchive::WaitForSamples(size_t count, platform::Milliseconds timeout) {
  const Deadline deadline = Deadline::After(timeout);
  while (samples().size() < count) {
    if (!stored_.Wait(deadline)) return samples().size() >= count;
  }
  return true;
}

void FakeAnalysisArchive::ReadAnalysisText(const std::string& name, const std::string& section,
                                           std::string& text) {
  readFailures.Check("read of " + name);
  {
    const UnseenGuard guard(lock_);
    const auto found = texts_.find({name, section});
    text = found != texts_.end() ? found->second : std::string();
  }
  if (afterRead) afterRead();
}

void FakeAnalysisArchive::WriteAnalysisText(const std::string& name, const std::string& section,
                                            const std::string& text) {
  writeFailures.Check("write of " + name);
  const UnseenGuard guard(lock_);
  texts_[{name, section}] = text;
}

void FakeArchiveManager::GetDefaultName(std::string& text) {
  const UnseenGuard guard(lock_);
  text = folder_;
}

void FakeArchiveManager::SetDefaultName(const std::string& folder) {
  const UnseenGuard guard(lock_);
  folder_ = folder;
}

void FakeSecurityManager::GetUserName(std::string& text) {
  const UnseenGuard guard(lock_);
  text = name_;
}

int32_t FakeSecurityManager::GetAccessLevel() {
  const UnseenGuard guard(lock_);
  return level_;
}

void FakeSecurityManager::SetUser(const std::string& name, int32_t level) {
  const UnseenGuard guard(lock_);
  name_ = name;
  level_ = level;
}

FakeHost::FakeHost() {
  FakeHost* expected = nullptr;
  if (!installedHost.compare_exchange_strong(expected, this)) std::abort();
}

FakeHost::~FakeHost() { installedHost = nullptr; }

}  // namespace rvx

extern "C" {

// There is no user-interface thread: the caller's thread does its work.
rvx::FrameWindow* ExecutePerformCreation(rvx::UserInterfaceClient* client) {
  rvx::FrameWindow* frame = nullptr;
  rvx::Host().RunOnUserInterface([&] { frame = client->PerformCreation(); });
  return frame;
}
int32_t ExecuteLoadResources(rvx::UserInterfaceClient* client) {
  int32_t result = 0;
  rvx::Host().RunOnUserInterface([&] { result = client->LoadResources(); });
  return result;
}
rvx::AnalysisArchive* GetAnalysisArchive() { return &rvx::Host().analysis; }
rvx::ArchiveManager* GetArchiveManager() { return &rvx::Host().archiveManager; }
rvx::InstrumentArchive* GetInstrumentArchive() { return &rvx::Host().instrumentArchive; }
rvx::InstrumentManager* GetInstrumentManager() { return &rvx::Host().instruments; }
rvx::PortManager* GetPortManager() { return &rvx::Host().ports; }
rvx::SampleArchive* GetSampleArchive() { return &rvx::Host().samples; }
rvx::SecurityManager* GetSecurityManager() { return &rvx::Host().security; }
// Of these two it is only known that they are passed on.
rvx::AnalysisManager* GetAnalysisManager() { return nullptr; }
rvx::ErrorArchive* GetErrorArchive() { return nullptr; }
}
