#include "tests/simulation/tray_record.h"

#include <fmt/format.h>

#include "tests/simulation/observer.h"
#include "tests/support/unseen_guard.h"

namespace rvx::soak {

namespace {

// Sets the event after what the host does in the call, even if that throws.
class SetAtEnd {
 public:
  explicit SetAtEnd(platform::Event& event) : event_(event) {}
  ~SetAtEnd() { event_.Set(); }
  SetAtEnd(const SetAtEnd&) = delete;
  SetAtEnd& operator=(const SetAtEnd&) = delete;

 private:
  platform::Event& event_;
};

}  // namespace

void TrayRecord::Expect(std::map<int32_t, std::string> samples, int edits) {
  const UnseenGuard guard(lock_);
  samples_ = std::move(samples);
  edits_ = edits;
}

void TrayRecord::Refused() {
  const UnseenGuard guard(lock_);
  refused_ = true;
}

bool TrayRecord::isOpen() {
  const UnseenGuard guard(lock_);
  return !refused_ && !finished_;
}

bool TrayRecord::hasFinished() {
  const UnseenGuard guard(lock_);
  return finished_;
}

int TrayRecord::finishedSamples() {
  const UnseenGuard guard(lock_);
  return finishedSamples_;
}

void TrayRecord::Enter(const std::string& call) {
  observer_.Note(fmt::format("watcher {}: {}", number_, call));
  const UnseenGuard guard(lock_);
  if (refused_) observer_.Break("a watcher of a refused start is called: " + call);
  if (finished_) observer_.Break("a watcher is called behind TrayFinished: " + call);
}

void TrayRecord::TrayStarted(int32_t /*tray*/) {
  Enter("tray started");
  {
    const UnseenGuard guard(lock_);
    if (started_) observer_.Break("TrayStarted a second time");
    started_ = true;
  }
  if (inside) inside(*this);
}

void TrayRecord::TrayFinished(int32_t /*tray*/) {
  Enter("tray finished");
  {
    const UnseenGuard guard(lock_);
    finished_ = true;
  }
  const SetAtEnd end(finishedEvent_);
  if (inside) inside(*this);
}

void TrayRecord::TrayPauseChanged(int32_t /*tray*/, int32_t paused) {
  Enter(paused != 0 ? "paused" : "resumed");
  if (inside) inside(*this);
}

void TrayRecord::SampleStarted(int32_t /*tray*/, int32_t position) {
  Enter(fmt::format("sample started {}", position));
  {
    const UnseenGuard guard(lock_);
    if (!started_) observer_.Break("SampleStarted before TrayStarted");
    // The tray's first stage (precondition) and last stage (move back) are reported as position 0.
    const bool ownStage = position == 0;
    if (ownStage && lastStarted_ > 0) movesBack_ = true;
    if (movesBack_ && !ownStage) observer_.Break("a sample is started behind the move back");
    if (!ownStage && position != lastStarted_ && position != lastStarted_ + 1) {
      observer_.Break(fmt::format("position {} is started behind {}", position, lastStarted_));
    }
    lastStarted_ = position;
  }
  const int errors = observer_.errors();
  {
    const UnseenGuard guard(lock_);
    errorsAtStart_ = errors;
  }
  if (inside) inside(*this);
}

void TrayRecord::SampleStatus(int32_t /*tray*/, int32_t position, std::string text) {
  Enter(fmt::format("sample status {} {}", position, text));
  if (inside) inside(*this);
}

void TrayRecord::SampleFinished(int32_t /*tray*/, int32_t position) {
  Enter(fmt::format("sample finished {}", position));
  {
    const UnseenGuard guard(lock_);
    if (position <= lastFinished_) observer_.Break("SampleFinished out of the tray's order");
    lastFinished_ = position;
    ++finishedSamples_;
  }
  CheckSamplesOf(position);
  if (inside) inside(*this);
}

// A position whose end was reported must have a stored or refused sample for each of its tests, or
// a reported failure.
void TrayRecord::CheckSamplesOf(int32_t position) {
  std::string sampleId;
  int edits = 0;
  int errors = 0;
  {
    const UnseenGuard guard(lock_);
    const auto found = samples_.find(position);
    if (found == samples_.end()) return;
    sampleId = found->second;
    edits = edits_;
    errors = errorsAtStart_;
  }
  observer_.CheckFinishedSample(sampleId, edits, errors);
}

}  // namespace rvx::soak
