#include "host/core/instrument_list.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/time_base.h"

namespace torvell {
namespace {

std::string SourceText(const std::string& portName, const std::string& instrumentId) {
  if (portName.empty()) return instrumentId;
  return instrumentId.empty() ? portName : portName + " " + instrumentId;
}

}  // namespace

InstrumentList::InstrumentList(ErrorStore& errors) : errors_(errors) {}

InstrumentList::~InstrumentList() = default;

std::vector<InstrumentEntry> InstrumentList::Entries() {
  platform::PlainGuard guard(lock_);
  return entries_;
}

void InstrumentList::Adopt(const rvx::ArrayOfInstruments& instruments) {
  std::vector<InstrumentEntry> added;
  for (rvx::ViscometerInstrument* instrument : instruments) {
    InstrumentEntry entry;
    entry.instrument = instrument;
    entry.scripting = dynamic_cast<rvx::InstrumentScripting*>(instrument);
    if (entry.scripting != nullptr) entry.identity = entry.scripting->GetIdentity();
    added.push_back(std::move(entry));
  }
  {
    platform::PlainGuard guard(lock_);
    for (InstrumentEntry& entry : added) {
      if (entry.scripting == nullptr) {
        entry.identity.archiveKey = fmt::format("#{}", entries_.size());
      }
      entries_.push_back(std::move(entry));
    }
  }
  NotifyInstrumentChanged();
}

void InstrumentList::DeleteAll() {
  std::vector<InstrumentEntry> gone;
  {
    platform::PlainGuard guard(lock_);
    gone.swap(entries_);
  }
  // No lock is held: an instrument that is deleted stores its settings, asks the user and closes
  // its port.
  for (const InstrumentEntry& entry : gone) delete entry.instrument;
  if (!gone.empty()) NotifyInstrumentChanged();
}

int32_t InstrumentList::RegisterMonitor(rvx::ViscometerArrayMonitor* monitor) {
  monitors_.Add(monitor);
  platform::PlainGuard guard(lock_);
  const int32_t handle = nextHandle_++;
  handles_[handle] = monitor;
  return handle;
}

void InstrumentList::UnregisterMonitor(int32_t handle) {
  rvx::ViscometerArrayMonitor* monitor = nullptr;
  {
    platform::PlainGuard guard(lock_);
    auto found = handles_.find(handle);
    if (found == handles_.end()) return;
    monitor = found->second;
    handles_.erase(found);
  }
  monitors_.Remove(monitor);
}

rvx::ViscometerInstrument* InstrumentList::GetInstrument(int32_t index) {
  platform::PlainGuard guard(lock_);
  if (index < 0 || static_cast<size_t>(index) >= entries_.size()) return nullptr;
  return entries_[static_cast<size_t>(index)].instrument;
}

// Only a window of a host has frames with an index, and this host has none.
void InstrumentList::ReleaseFrame(int32_t) {}

void InstrumentList::ReportError(rvx::ActionException* error) {
  if (error == nullptr) return;
  const rvx::ActionErrorRecord& record = error->GetRecord();
  std::string portName;
  {
    platform::PlainGuard guard(lock_);
    for (const InstrumentEntry& entry : entries_) {
      if (entry.instrument == record.source) portName = entry.identity.portName;
    }
  }
  ErrorReport report;
  report.time = record.time;
  report.kind = record.kind;
  report.source = SourceText(portName, record.instrumentId);
  report.message = record.message;
  report.code = record.code;
  report.tray = record.tray;
  report.position = record.position;
  report.sampleId = record.sampleId;
  report.operatorName = record.operatorName;
  report.sampleFailure = record.sampleFailure != 0;
  report.instrument = record.source;
  errors_.Report(report);
  monitors_.ForEach(
      [&record](rvx::ViscometerArrayMonitor& monitor) { monitor.ErrorReported(record); });
}

void InstrumentList::NotifyInstrumentChanged() {
  monitors_.ForEach([](rvx::ViscometerArrayMonitor& monitor) { monitor.InstrumentsChanged(0); });
}

int32_t InstrumentList::SelectInstrument(int32_t index, int32_t select) {
  {
    platform::PlainGuard guard(lock_);
    if (index < 0 || static_cast<size_t>(index) >= entries_.size()) return 0;
    if (select == 0) return 1;
    selected_ = index;
  }
  selections_.ForEach([index](SelectionListener& listener) { listener.InstrumentSelected(index); });
  return 1;
}

int32_t InstrumentList::SelectedInstrument() {
  platform::PlainGuard guard(lock_);
  return selected_;
}

void InstrumentList::LineBroken(const std::string& port, const std::string& reason) {
  std::vector<rvx::ViscometerInstrument*> running;
  ErrorReport report;
  report.source = "port " + port;
  for (const InstrumentEntry& entry : Entries()) {
    if (entry.identity.portName != port) continue;
    report.instrument = entry.instrument;
    if (entry.instrument->IsTrayActive() != 0) running.push_back(entry.instrument);
  }
  const bool paused = !running.empty();
  report.time = platform::LocalNow();
  report.kind = 1;
  report.message = fmt::format(
      "The line of {} broke: {}. {}Plug the device in again; the line then opens by itself{}.",
      port, reason, paused ? "The tray that was running there is paused. " : "",
      paused ? ", and the tray goes on when you resume it" : "");
  // Report first: a run without a person ends at its pause, and would end before its reason is
  // known.
  errors_.Report(report);
  for (rvx::ViscometerInstrument* instrument : running) instrument->PauseTray(0, 1);
}

void InstrumentList::LineRestored(const std::string& port) {
  ErrorReport report;
  report.source = "port " + port;
  for (const InstrumentEntry& entry : Entries()) {
    if (entry.identity.portName == port) report.instrument = entry.instrument;
  }
  report.time = platform::LocalNow();
  report.message = fmt::format(
      "The line of {} is open again. Nothing goes on by itself: a paused tray waits to be resumed.",
      port);
  errors_.Report(report);
}

}  // namespace torvell
