#include "host/tray/preparation.h"

#include <fmt/format.h>

#include "host/core/host_error.h"
#include "host/tray/number_text.h"

namespace torvell {
namespace {

// degrees C. A tray requires less than 10.0; half a degree less keeps a noisy reading on the safe
// side.
constexpr double kPreparedTemperature = 9.5;
constexpr double kChillerTemperature = 5.0;
constexpr platform::Milliseconds kCoolingTimeout{3600 * 1000};
constexpr platform::Milliseconds kReadyTimeout{60 * 1000};

void RaiseIfRefused(const rvx::ScriptingResult& result) {
  if (!result) return;
  const bool level = result->kind() == rvx::ScriptingProblem::Kind::NotAllowed;
  throw HostError(level ? HostErrorKind::NotAllowed : HostErrorKind::Tray, result->Sentences());
}

// Waits until `done` returns true for the readings; returns false at the deadline or on an
// interruption.
bool WaitUntil(const InstrumentEntry& entry, const std::function<bool()>& isInterrupted,
               platform::Milliseconds timeout,
               const std::function<bool(const rvx::InstrumentReadings&)>& done) {
  const platform::Deadline deadline = platform::Deadline::After(timeout);
  for (;;) {
    const rvx::InstrumentReadings readings = entry.scripting->GetReadings();
    if (readings.sequence > 0 && done(readings)) return true;
    if (isInterrupted()) return false;
    if (deadline.HasPassed()) return false;
    const platform::Deadline step = platform::Deadline::After(platform::Milliseconds(1000));
    entry.scripting->WaitForReadings(readings.sequence,
                                     platform::Deadline::Earliest(step, deadline));
  }
}

bool IsCold(const rvx::InstrumentReadings& readings) {
  return readings.temperature < kPreparedTemperature;
}

}  // namespace

void WaitForStatus(const InstrumentEntry& entry) {
  if (entry.scripting->WaitForReadings(0, platform::Deadline::After(kFirstStatusTimeout))) return;
  throw HostError(
      HostErrorKind::Tray,
      fmt::format("{} did not report its status within {} seconds. Its power or its cable may be "
                  "off. Nothing was started. Check both and try again.",
                  entry.Title(), kFirstStatusTimeout.count() / 1000));
}

bool PrepareSimulated(const InstrumentEntry& entry, const std::function<bool()>& isInterrupted,
                      const std::function<void(const std::string&)>& say) {
  RaiseIfRefused(entry.scripting->SetHomeFlag());
  WaitForStatus(entry);
  // The cell is chilled even if it happens to be cold: otherwise it warms up before anybody can
  // start.
  RaiseIfRefused(entry.scripting->ChillSimulatedCell(kChillerTemperature));
  if (!IsCold(entry.scripting->GetReadings())) {
    say(fmt::format("cooling the cell below {} degC ...", ExactNumber(kPreparedTemperature)));
    if (!WaitUntil(entry, isInterrupted, kCoolingTimeout, IsCold) && !isInterrupted()) {
      throw HostError(HostErrorKind::Tray,
                      "the simulated cell did not get cold within an hour. Nothing was started.");
    }
  }
  const auto isAtRest = [](const rvx::InstrumentReadings& readings) {
    return readings.machineStatus == 0 && readings.switchByte == 0 && readings.errorCode == 0;
  };
  if (!WaitUntil(entry, isInterrupted, kReadyTimeout, isAtRest) && !isInterrupted()) {
    throw HostError(HostErrorKind::Tray,
                    "the simulated instrument did not come to rest within a minute. Nothing was "
                    "started. Abort its operation and try again.");
  }
  return !isInterrupted();
}

}  // namespace torvell
