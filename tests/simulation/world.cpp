#include "tests/simulation/world.h"

#include <fmt/format.h>
#include <unistd.h>

#include "module/execution/action_classes.h"
#include "platform/key_store.h"
#include "tests/simulation/expected_result.h"

namespace rvx::soak {

using platform::Deadline;
using platform::Microseconds;
using platform::Milliseconds;
using namespace std::chrono_literals;

namespace {

constexpr char kPort[] = "COM1";
constexpr char kDeadPort[] = "COM4";
constexpr char kSimulateKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\HaldenInstrument\\TORVELL\\Instruments\\RVX";
// Longest destruction: the last commands, what a run may be waiting for, and threads that are held
// up.
constexpr Milliseconds kClosing{180'000};
// Longest time from the end of the faults until the instrument is ready.
constexpr Milliseconds kGettingReady{900'000};
constexpr Milliseconds kLook{5000};
// Time for twenty status frames and for held-up threads to go on.
constexpr Milliseconds kSettling{31'000};
// How long a person leaves a paused tray alone.
constexpr Milliseconds kPatience{30'000};

}  // namespace

World::World(const Scenario& scenario, RunPage& page)
    : scenario_(scenario),
      observer_(page, scenario),
      hostFaults_(host_, scenario, observer_),
      port_(host_.ports.Add(kPort)),
      line_(port_, scenario, observer_),
      controller_(MakeController(scenario, port_)),
      tap_(observer_),
      tapBehind_(observer_),
      desk_(scenario, observer_, hostFaults_, line_) {
  platform::OverrideKeyValue(kSimulateKey, "Simulate",
                             scenario.controller == ControllerKind::SimulatedInside ? 1 : 0);
  if (scenario.profile == Profile::Tray) {
    archive_ = std::make_unique<RealArchive>(RealArchive::FolderOf(getpid()));
    hostFaults_.archive = archive_.get();
  }
  line_.onStart = [this](const std::vector<uint8_t>& payload) {
    controller_->BeforeStart(payload);
  };
  host_.ports.OpenPort(kPort, &tap_);
}

World::~World() { host_.ports.ClosePort(kPort, &tap_); }

void World::Run() {
  if (scenario_.rates.Has(Fault::OpenFails)) RunOnDeadPort();
  OpenInstrument();
  RunThroughFaults();
  if (scenario_.rates.Has(Fault::DestroyedEarly)) {
    CloseInstrument();
    Calm();
    OpenInstrument();
  } else {
    Calm();
    AwaitEndOfTray();
  }
  RunFreshTray();
  CloseInstrument();
  CheckArchive();
}

// Checks what a host finds at its next start.
void World::CheckArchive() {
  if (!archive_) return;
  const std::string problem = archive_->Check();
  if (!problem.empty()) observer_.Break(problem);
}

// An instrument whose port can't be opened has no line. Its calls must neither hang nor fail.
void World::RunOnDeadPort() {
  observer_.Note("a port that can't be opened");
  observer_.InstrumentOpened();
  instrument_ =
      std::make_unique<C_RVX>(kDeadPort, 0, "0QMTRVX 4 02.17NOBODY    ", GetActionTable());
  desk_.Put(instrument_.get());
  desk_.Fill(scenario_.samples);
  desk_.Start();
  platform::Sleep(60s);
  CloseInstrument();
}

void World::OpenInstrument() {
  observer_.Note("the instrument is opened");
  observer_.InstrumentOpened();
  instrument_ = std::make_unique<C_RVX>(kPort, 0, controller_->identification(), GetActionTable());
  host_.ports.OpenPort(kPort, &tapBehind_);
  desk_.Put(instrument_.get());
  Configure();
  AwaitReady();
}

void World::Configure() {
  const ConfigurationGuard guard(instrument_->configuration());
  ConfigurationFields& record = instrument_->configuration().fields;
  for (size_t slot = 0; slot < record.b0.size(); ++slot) {
    record.b0.at(slot) = kB0 + static_cast<double>(slot);
    record.b1.at(slot) = kB1;
    record.b2.at(slot) = kB2;
  }
  record.testRecord.injectionTime = scenario_.injectionTime;
  record.testRecord.coolDownTime = scenario_.coolDownTime;
  record.testRecord.preconditionTime = scenario_.preconditionTime;
}

void World::AwaitStatus() {
  platform::Event event("soak: status");
  instrument_->AddStatusEvent(&event);
  event.Wait(kLook);
  instrument_->RemoveStatusEvent(&event);
}

// Brings the instrument to where a tray can be started: homed, cold, idle. On a bad line each step
// may need several tries.
void World::AwaitReady() {
  const Deadline deadline = Deadline::After(kGettingReady);
  const bool plays = scenario_.controller == ControllerKind::Scripted;
  Deadline retry = Deadline::Now();
  for (;;) {
    // Checked first: before the first status all readings are 0.
    const bool speaks = instrument_->GetStatusSequence() > 1;
    const bool homed = instrument_->GetMachineStatus() == 0;
    const bool cold = instrument_->GetTemperature() < 5.0;
    if (speaks && homed && cold && instrument_->GetSwitchByte() == 0) return;
    if (deadline.HasPassed()) {
      if (scenario_.rates.TouchesLine()) return;
      observer_.Break("the instrument does not get ready");
    }
    if ((!homed || !cold) && speaks && retry.HasPassed()) {
      retry = Deadline::After(60s);
      if (!homed) instrument_->SetHomeFlag(nullptr);
      // The simulator also cools with its control off, and then stays idle.
      instrument_->SetTemperatureControl(plays, -20.0, nullptr);
    }
    AwaitStatus();
  }
}

void World::RunThroughFaults() {
  desk_.Fill(scenario_.samples);
  TrayRecord* record = desk_.Start();
  desk_.Come();
  const auto mishaps = platform::StartThread("mishaps", [this] { DriveMishaps(); });
  const bool dies = scenario_.rates.Has(Fault::DestroyedEarly);
  const Deadline end = Deadline::After(dies ? scenario_.destroyAt : scenario_.horizon);
  // A tray without operators ends by itself, and the rest of the time need not pass.
  const bool goesOn = !scenario_.steps[0].empty() || !scenario_.steps[1].empty();
  if (record != nullptr && !goesOn) {
    record->finished().Wait(end);
  } else {
    over_.Wait(end);
  }
  over_.Set();
  mishaps->Join();
  desk_.Leave();
}

void World::DriveMishaps() {
  const Microseconds begin = platform::MonotonicTime();
  for (const Mishap& mishap : scenario_.mishaps) {
    if (over_.Wait(Deadline::At(begin + mishap.at))) return;
    Befall(mishap);
  }
}

void World::Befall(const Mishap& mishap) {
  if (mishap.fault == Fault::ClockJumps) {
    const Milliseconds by = mishap.value % 2 == 0 ? mishap.lasts : -mishap.lasts;
    observer_.Note(fmt::format("the clock jumps by {} ms", by.count()));
    observer_.ClockJumps();
    platform::MoveTimeOfDay(by);
  } else if (mishap.fault == Fault::ArchiveReadOnly) {
    observer_.Note(fmt::format("the archive can only be read for {} ms", mishap.lasts.count()));
    if (archive_) archive_->BeReadOnlyUntil(platform::MonotonicTime() + mishap.lasts);
  } else {
    line_.Begin(mishap);
  }
}

void World::Calm() {
  line_.EndFaults();
  hostFaults_.EndFaults();
  if (archive_) archive_->BeReadOnlyUntil(Microseconds(0));
  platform::EndStalls();
}

// With the faults switched off the tray should end by itself. An earlier fault may prevent that,
// for example by a wait without a limit for an instrument that went idle by itself. Then the tray
// is aborted.
void World::AwaitEndOfTray() {
  const Deadline deadline = Deadline::After(scenario_.estimate * 2 + kGettingReady);
  while (instrument_->IsTrayRunning() != 0 && !deadline.HasPassed()) {
    desk_.Resume();
    platform::Sleep(kPatience);
  }
  if (instrument_->IsTrayRunning() == 0) return;
  if (!scenario_.rates.TouchesLine()) observer_.Break("the tray does not end");
  observer_.Note("the tray is aborted");
  desk_.Abort();
  if (instrument_->IsTrayRunning() != 0) observer_.Break("an aborted tray still runs");
}

void World::RunFreshTray() {
  observer_.Note("a fresh tray");
  // An operator's own action or a lost CAB may have left something running.
  if (line_.IsBusy()) instrument_->SendAbort(nullptr);
  // The supply voltages are means over twenty status frames, including damaged ones, and the values
  // that are sent to the instrument depend on them.
  platform::Sleep(kSettling);
  AwaitReady();
  const uint64_t before = observer_.stored();
  desk_.Clear();
  desk_.Fill({{0, false, {{-20.0, 6}}}, {1, true, {{-25.0, 7}}}, {3, false, {{-15.0, 8}}}});
  TrayRecord* record = desk_.Start();
  if (record == nullptr) observer_.Break("a fresh tray is refused");
  const Deadline deadline = Deadline::After(7200s);
  while (!record->finished().Wait(kPatience)) {
    desk_.Resume();
    if (deadline.HasPassed()) observer_.Break("a fresh tray does not end");
  }
  const uint64_t samples = observer_.stored() - before;
  // There may be more, if an earlier sample was still being stored.
  if (samples < 3) observer_.Break(fmt::format("a fresh tray stored {} samples of 3", samples));
}

void World::CloseInstrument() {
  observer_.Note("the instrument is closed");
  const bool wasAlive = line_.IsAlive() && !scenario_.rates.TouchesLine();
  const bool wasOpen =
      instrument_->IsTrayRunning() != 0 && line_.IsBusy() && instrument_->GetSwitchByte() != 0;
  if (wasOpen) observer_.RunEnded();
  const Microseconds begin = platform::MonotonicTime();
  instrument_.reset();
  host_.ports.ClosePort(kPort, &tapBehind_);
  desk_.Put(nullptr);
  if (platform::MonotonicTime() - begin > kClosing) observer_.Break("the end takes too long");
  observer_.InstrumentClosed(wasAlive);
}

}  // namespace rvx::soak
