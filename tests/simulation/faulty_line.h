// The line between the module and a controller, with everything that can happen to the two.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/lock.h"
#include "tests/simulation/draws.h"
#include "tests/simulation/line_reader.h"
#include "tests/simulation/observer.h"
#include "tests/simulation/scenario.h"
#include "tests/support/fake_port.h"

namespace rvx::soak {

// A filter on a fake port. It draws the faults of bytes and frames itself; Begin starts a mishap,
// which ends after its time. It works on bytes only, with any controller. Any thread may call it.
class FaultyLine : public LineFilter {
 public:
  FaultyLine(FakePort& port, const Scenario& scenario, Observer& observer);
  ~FaultyLine() override;

  // --- LineFilter
  void FromHost(std::span<const uint8_t> bytes, const Hear& hear) override;
  void FromInstrument(std::string_view bytes, platform::Milliseconds delay,
                      const Deliver& deliver) override;

  // Begins a mishap, which lasts for its time.
  void Begin(const Mishap& mishap);
  // Ends all faults and mishaps.
  void EndFaults();
  // Whether the controller's last status was busy, even if that frame did not reach the module.
  bool IsBusy();
  // Whether frames can pass at present.
  bool IsAlive();
  // Called with the payload of each test that the controller is told to start.
  std::function<void(const std::vector<uint8_t>&)> onStart;

 private:
  // What happens to a frame of the module.
  struct Heard {
    std::vector<std::string> frames;   // reach the controller
    std::vector<std::string> answers;  // sent in its place
  };
  struct Piece {
    std::string bytes;
    platform::Milliseconds delay;
  };
  Heard Hearing(std::string bytes) REQUIRES(lock_);
  // Decides whether a whole request reaches the controller or is answered in its place.
  void Hear(const std::string& frame, Heard& heard) REQUIRES(lock_);
  // The controller's frame as the instrument sends it; nothing if it is silent.
  std::optional<std::string> Leaving(std::string_view frame) REQUIRES(lock_);
  void Disguise(std::array<uint8_t, 19>& status) REQUIRES(lock_);
  std::vector<Piece> Arriving(const std::string& frame, platform::Milliseconds delay)
      REQUIRES(lock_);
  std::string DamageBytes(std::string_view bytes) REQUIRES(lock_);
  bool Happens(Fault fault) REQUIRES(lock_);
  bool IsUnder(Fault fault) REQUIRES(lock_);
  bool IsDead() REQUIRES(lock_);
  platform::Milliseconds DrawLateness() REQUIRES(lock_);

  FakePort& port_;
  const Scenario& scenario_;
  Observer& observer_;

  platform::PlainLock lock_{"soak line", platform::kLeafRank - 1};
  Draws frameDraws_ GUARDED_BY(lock_);
  Draws byteDraws_ GUARDED_BY(lock_);
  bool calm_ GUARDED_BY(lock_) = false;
  std::string request_ GUARDED_BY(lock_);    // bytes of a request that has not ended
  std::string lastReply_ GUARDED_BY(lock_);  // for a repetition
  std::array<uint8_t, 19> lastStatus_ GUARDED_BY(lock_){};
  std::array<int64_t, kFaultCount> until_ GUARDED_BY(lock_){};  // microseconds
  int refusals_ GUARDED_BY(lock_) = 0;                          // left in the present series
  uint8_t refusalCode_ GUARDED_BY(lock_) = 0;
  int swallowed_ GUARDED_BY(lock_) = 0;       // replies to drop, to CABs of the line
  bool ownAbort_ GUARDED_BY(lock_) = false;   // such a CAB is to be sent
  bool unsettled_ GUARDED_BY(lock_) = false;  // shows a cooldown that does not end
  uint16_t countOffset_ GUARDED_BY(lock_) = 0;
  std::optional<uint16_t> heldCount_ GUARDED_BY(lock_);
};

}  // namespace rvx::soak
