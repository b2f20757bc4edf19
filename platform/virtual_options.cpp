#include "platform/virtual_options.h"

#include "platform/fatal.h"
#include "platform/random_stream.h"
#include "platform/time_base.h"
#include "platform/virtual_base.h"

namespace platform {
namespace {

constexpr std::chrono::seconds kHangAfter{10};
constexpr double kMinLead = 100;              // ms, from the start to the wrap of the clock
constexpr double kMaxLead = 8 * 3600 * 1000;  // ms, a working day

ScheduleStrategy DrawStrategy(RandomStream draws) {
  const uint32_t percent = draws.Below(100);
  if (percent < 40) return ScheduleStrategy::Sticky;
  if (percent < 70) return ScheduleStrategy::Priority;
  if (percent < 90) return ScheduleStrategy::StallHeavy;
  if (percent < 95) return ScheduleStrategy::Uniform;
  return ScheduleStrategy::RoundRobin;
}

uint32_t DrawStartTick(RandomStream draws) {
  if (!draws.OneIn(4)) return 0;
  const auto lead = static_cast<uint32_t>(draws.LogUniform(kMinLead, kMaxLead));
  return (draws.OneIn(2) ? 0x8000'0000u : 0u) - lead;
}

}  // namespace

const char* NameOf(ScheduleStrategy strategy) {
  switch (strategy) {
    case ScheduleStrategy::Sticky:
      return "sticky";
    case ScheduleStrategy::Priority:
      return "priority";
    case ScheduleStrategy::StallHeavy:
      return "stall-heavy";
    case ScheduleStrategy::Uniform:
      return "uniform";
    case ScheduleStrategy::RoundRobin:
      return "round robin";
  }
  return "";
}

TimeBaseOptions DrawTimeBaseOptions(uint64_t seed) {
  const RandomStream draws(seed, StreamId::Options);
  TimeBaseOptions options;
  options.kind = TimeBaseKind::Virtual;
  options.seed = seed;
  options.startTick = DrawStartTick(draws.Part(0));
  VirtualOptions& virtualTime = options.virtualTime;
  virtualTime.strategy = DrawStrategy(draws.Part(1));
  virtualTime.stalls = true;
  virtualTime.lateWakeUps = true;
  virtualTime.spuriousWakeUps = true;
  virtualTime.lostSignals = true;
  virtualTime.hangAfter = kHangAfter;
  return options;
}

void OpenScheduleWindow() {
  if (detail::VirtualBase* base = detail::VirtualBase::Current()) base->OpenWindow();
}

void AbandonVirtualRun(const std::string& headline) {
  const detail::VirtualBase* base = detail::VirtualBase::Current();
  if (base == nullptr) detail::Fatal(headline);
  base->Abandon(headline);
}

}  // namespace platform
