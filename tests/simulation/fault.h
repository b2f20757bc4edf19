// What can go wrong in a simulated run.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace rvx::soak {

enum class Fault : size_t {
  // The line, drawn for each byte.
  LostByte,
  FlippedByte,
  DoubledByte,
  InsertedByte,
  // The line, drawn for each frame.
  Gap,        // a pause inside a reply
  LateReply,  // around the 2 s that a reply may take
  LostReply,
  DoubledReply,
  OldReply,    // an earlier reply again
  Babble,      // unrequested bytes
  ShortWrite,  // the end of a request is missing
  // The line and the instrument, a few times in a run.
  CutLine,
  OpenFails,
  Silent,
  Refuses,
  NotReady,
  SteppersLost,
  GoesIdle,
  PowerCycle,
  NeverSettles,
  CountJumps,
  CountRepeats,
  // The host.
  ArchiveBusy,
  ArchiveFails,
  ArchiveDead,
  FalseFailure,  // stored, and reported as failed
  SlowWatcher,
  CallingWatcher,
  SlowUser,
  ArchiveReadOnly,  // the host's database, in the profile Tray
  ThrowingWatcher,
  ClockJumps,  // the time of day
  // People.
  Operator,
  SecondOperator,
  DestroyedEarly,
  // The schedule.
  Stalls,
  LateWakeups,
  SpuriousWakeups,
};
inline constexpr size_t kFaultCount = static_cast<size_t>(Fault::SpuriousWakeups) + 1;

struct FaultKind {
  std::string_view name;  // as --without takes it
  // The range of its rate: the probability for each byte, frame or call of the host, or the number
  // of times in a run.
  double low;
  double high;
};

const FaultKind& KindOf(Fault fault);
std::optional<Fault> FaultByName(std::string_view name);

// The rates of all faults of a run; with 0 a fault does not happen.
class FaultRates {
 public:
  double operator[](Fault fault) const { return rates_[static_cast<size_t>(fault)]; }
  bool Has(Fault fault) const { return (*this)[fault] > 0.0; }
  void Set(Fault fault, double rate) { rates_[static_cast<size_t>(fault)] = rate; }
  // Whether anything between module and controller may go wrong.
  bool TouchesLine() const;

 private:
  std::array<double, kFaultCount> rates_{};
};

}  // namespace rvx::soak
