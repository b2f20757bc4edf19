#include "platform/schedule_policy.h"

#include "platform/mix.h"

namespace platform::detail {
namespace {

class StickyPolicy final : public SchedulePolicy {
 public:
  explicit StickyPolicy(uint64_t seed) : draws_(seed) {
    constexpr uint32_t kOneIn[] = {5, 20, 100};
    oneIn_ = kOneIn[draws_.Below(3)];
  }
  bool LeavesEarly() override { return draws_.Below(oneIn_) == 0; }
  size_t Choose(size_t count) override { return draws_.Below(static_cast<uint32_t>(count)); }

 private:
  SplitMix draws_;
  uint32_t oneIn_ = 1;
};

}  // namespace

std::unique_ptr<SchedulePolicy> MakeStickyPolicy(uint64_t seed) {
  return std::make_unique<StickyPolicy>(seed);
}

}  // namespace platform::detail
