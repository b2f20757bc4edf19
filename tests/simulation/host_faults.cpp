#include "tests/simulation/host_faults.h"

#include <stdexcept>

#include "tests/simulation/expected_result.h"
#include "tests/support/unseen_guard.h"

namespace rvx::soak {

using platform::Milliseconds;
using namespace std::chrono_literals;

HostFaults::HostFaults(FakeHost& host, const Scenario& scenario, Observer& observer)
    : scenario_(scenario),
      observer_(observer),
      draws_(scenario.seed, platform::StreamId::Archive, "host") {
  host.samples.beforeStore = [this](const Sample& sample) { BeforeStore(sample); };
  host.instruments.onError = [this](const ActionErrorRecord& error) {
    observer_.ErrorReported(error);
  };
  platform::SetPrompter(this);
}

HostFaults::~HostFaults() { platform::SetPrompter(nullptr); }

bool HostFaults::Happens(Fault fault) {
  const double rate = scenario_.rates[fault];
  if (rate <= 0.0 || calm_) return false;
  const UnseenGuard guard(lock_);
  return draws_.Chance(rate);
}

Milliseconds HostFaults::DrawTime(Milliseconds low, Milliseconds high) {
  const UnseenGuard guard(lock_);
  return draws_.LogUniform(low, high);
}

int HostFaults::DrawBelow(int bound) {
  const UnseenGuard guard(lock_);
  return draws_.Below(bound);
}

void HostFaults::BeforeStore(const Sample& sample) {
  observer_.StoreBegun(sample);
  if (Happens(Fault::ArchiveBusy)) platform::Sleep(DrawTime(10ms, 10'000ms));
  const bool fails = Happens(Fault::ArchiveFails);
  const bool isDead = Happens(Fault::ArchiveDead);
  const bool lies = Happens(Fault::FalseFailure);
  bool thrown = fails || isDead || lies;
  ActionErrorRecord record;
  record.message = kArchiveFailure;
  if (archive != nullptr && !fails && !isDead) {
    if (const std::optional<std::string> refusal = archive->Store(sample)) {
      thrown = true;
      record.message += ": " + *refusal;
    }
  }
  observer_.StoreEnded(sample, thrown);
  if (!thrown) return;
  record.kind = 1;
  throw new ArchiveException(record);
}

void HostFaults::InsideWatcher() {
  if (Happens(Fault::SlowWatcher)) platform::Sleep(DrawTime(1ms, 3000ms));
  if (callBack && Happens(Fault::CallingWatcher)) CallBack();
  MayThrow();
}

void HostFaults::MayThrow() {
  if (!Happens(Fault::ThrowingWatcher)) return;
  observer_.WatcherThrows();
  switch (DrawBelow(3)) {
    case 0: {
      ActionErrorRecord record;
      record.message = "planned failure of a watcher";
      throw new ActionException(record);
    }
    case 1:
      throw std::runtime_error("planned failure of a watcher");
    default:
      throw 1;
  }
}

void HostFaults::CallBack() {
  constexpr OperatorDeed kDeeds[] = {OperatorDeed::Start,      OperatorDeed::PauseNow,
                                     OperatorDeed::PauseNow,   OperatorDeed::PauseAfter,
                                     OperatorDeed::QueryPause, OperatorDeed::Resume,
                                     OperatorDeed::Resume,     OperatorDeed::Abort};
  callBack(kDeeds[DrawBelow(static_cast<int>(std::size(kDeeds)))]);
}

platform::MessageAnswer HostFaults::ShowMessage(const std::string& text,
                                                platform::MessageButtons buttons,
                                                platform::MessageIcon /*icon*/) {
  observer_.Note("asked: " + text);
  if (Happens(Fault::SlowUser)) platform::Sleep(DrawTime(100ms, 60'000ms));
  if (buttons == platform::MessageButtons::Ok) return platform::MessageAnswer::Ok;
  const bool no = !calm_ && DrawBelow(5) == 0;
  return no ? platform::MessageAnswer::No : platform::MessageAnswer::Yes;
}

std::optional<int> HostFaults::Choose(const std::string& title,
                                      const std::vector<std::string>& /*options*/,
                                      int /*initial*/) {
  observer_.Note("asked: " + title);
  if (Happens(Fault::SlowUser)) platform::Sleep(DrawTime(100ms, 60'000ms));
  const int choice = DrawBelow(3);
  return choice < 2 ? std::optional(choice) : std::nullopt;
}

}  // namespace rvx::soak
