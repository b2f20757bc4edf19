// Life of an instrument, and its operations as the host's ViscometerInstrument.
#include "module/instrument/c_rvx.h"

#include <iterator>
#include <system_error>

#include "boundary/access_levels.h"
#include "module/instrument/c_rvx_parts.h"
#include "module/instrument/simulate_setting.h"
#include "module/instrument/temperature_offset.h"
#include "module/protocol/frames.h"
#include "module/protocol/identification.h"
#include "module/resources/string_ids.h"
#include "platform/end_program.h"
#include "platform/prompt.h"
#include "platform/text.h"

namespace rvx {
namespace {

// How long Close waits for a last CAB to be sent; it waits that long if the line is dead.
constexpr platform::Milliseconds kLastCommands{4000};

}  // namespace

C_RVX::C_RVX(const std::string& portName, uint8_t address, const std::string& identification,
             const ActionTable& actions)
    : C_RVX(actions, OpenedLater()) {
  Open(portName, address, identification);
}

C_RVX::C_RVX(const ActionTable& actions, OpenedLater)
    : parts_(std::make_unique<Parts>(*this, actions)) {}

C_RVX::Parts::Parts(C_RVX& instrument, const ActionTable& actionTable)
    : actions(actionTable),
      conversion(instrument.configuration_),
      operationClock(instrument.configuration_),
      standards(instrument.configuration_),
      statusWindow([&instrument] { return instrument.ReadForStatusWindow(); }),
      trayController(instrument),
      line(instrument.configuration_, IsSimulated() != 0),
      peer(instrument,
           {instrument.configuration_, line, status, conversion, errorClients, statusWindow}),
      lastReply(std::make_unique<LastReplyClient>(instrument, instrument.configuration_)),
      userInterfaceJobs(std::make_unique<PostedJobs>()) {}

void C_RVX::Open(const std::string& portName, uint8_t address, const std::string& identification) {
  parts_->conversation = std::make_unique<Conversation>(parts_->peer, address);
  parts_->texts.Load();
  {
    const ConfigurationGuard guard(configuration_);
    configuration_.fields.portName = portName;
    configuration_.fields.address = address;
    configuration_.fields.responseTimeout = 6000;
  }
  parts_->line.OpenPort(portName, *this);
  const bool stored = LoadStoredSettings();
  {
    const ConfigurationGuard guard(configuration_);
    parts_->peer.TakeIdentification(identification.empty() ? std::string(kSimulatorIdentification)
                                                           : identification);
    // Some defaults depend on the model, which is known only now.
    if (!stored) configuration_.SetDefaults();
    ConfigurationFields& fields = configuration_.fields;
    if (UsesTemperatureOffset(fields.modelCode) && fields.temperatureOffset == 0.0) {
      fields.temperatureOffset = kUsualTemperatureOffset;
    }
  }
  // After the identification, which says whether the ninth temperature is in use.
  parts_->standards.Read();
  // Before the communications thread, which sends to the simulator.
  StartSimulator();
  parts_->conversation->Start();
  parts_->isOpen = true;
}

C_RVX::~C_RVX() {
  Close();
  // Its destructor removes it from the conversation, which needs all parts.
  parts_->lastReply.reset();
}

void C_RVX::Close() {
  if (!parts_->isOpen) return;
  if (IsOnOwnThread()) RefuseDestruction();
  parts_->isOpen = false;
  try {
    GetInstrumentArchive()->StoreInstrument(GetArchiveKey(), this);
  } catch (ArchiveException* failure) {
    delete failure;  // the host has told its user; nothing can be done about it here
  }
  EndRunForDestruction();
  parts_->closing.Set();
  parts_->users.WaitUntilUnused();
  parts_->conversation->WaitUntilIdle(platform::Deadline::After(kLastCommands));
  parts_->conversation->Stop();
  parts_->userInterfaceJobs.reset();
  parts_->line.Close(*this);
}

void C_RVX::StartSimulator() {
  try {
    parts_->line.StartSimulator(*this);
  } catch (const std::system_error&) {
    // The same as for an instrument that is switched off: it does not respond, and everything else
    // works.
    ActionErrorRecord record = MakeErrorRecord();
    record.message = Text(kTextNoThread);
    record.code = MessageCode::NoThread;
    record.kind = 1;
    ReportError(record);
  }
}

void C_RVX::EndRunForDestruction() {
  if (IsTrayRunning() == 0) return;
  const platform::MessageAnswer answer = platform::GetPrompter().ShowMessage(
      Text(kTextStopRunningSamples), platform::MessageButtons::YesNo,
      platform::MessageIcon::Question);
  // The instrument is being destroyed with its tray thread, so the answer No can't be followed. The
  // user is told so.
  if (answer == platform::MessageAnswer::No && IsTrayRunning() != 0) {
    ActionErrorRecord record = MakeErrorRecord();
    record.message =
        "The tray was ended before all samples were run, because the instrument was closed. "
        "Samples that were finished are stored; start the tray again for the others.";
    record.kind = 1;
    ReportError(record);
  }
  parts_->trayController.Abort();
}

bool C_RVX::IsOnOwnThread() {
  return parts_->conversation->IsOnItsThreads() || parts_->users.IsOnOwnThread();
}

// The destructor would wait for ever for the thread that it is called on, with the instrument in
// the middle of a test. Stops the run and the instrument as far as that is possible, then ends the
// program.
void C_RVX::RefuseDestruction() {
  parts_->trayController.Abort();
  if (parts_->conversation->IsOnSender()) {
    // This is the thread that sends the queue, so a queued abort would not be sent.
    parts_->line.Send(MakeFrame(AbortCommand(GetAddress())));
  } else {
    SendAbort(nullptr);  // also for a test outside the tray
    // Only the abort is sent of what is queued: the replies to other commands can't be read if this
    // is the thread that reads them, and a command may start a motion. The wait is limited, since
    // the caller may hold a lock that the communications thread waits for.
    parts_->conversation->StopWithin(platform::Deadline::After(kLastCommands));
  }
  platform::EndProgram(
      "an instrument is destroyed from inside a call that it makes (a watcher's, or the report of "
      "an error). The host program is at fault: it must let the call return first. The instrument "
      "is told to stop if it still can be, and the program ends; samples that were finished are "
      "stored. Look whether the instrument is at rest.");
}

// --- ViscometerInstrument ---

void C_RVX::StopTray(int32_t /*tray*/) {
  if (IsTrayRunning() != 0) QueryAbortTray();
}

int32_t C_RVX::QueryAbortTray() {
  if (IsTrayRunning() == 0) return 0;
  const platform::MessageAnswer answer = platform::GetPrompter().ShowMessage(
      Text(kTextStopRunningSamples), platform::MessageButtons::YesNo,
      platform::MessageIcon::Question);
  if (answer == platform::MessageAnswer::No) return 0;
  parts_->trayController.Abort();
  return 1;
}

int32_t C_RVX::StartTrayFor(int32_t /*tray*/, TrayWatcher* watcher) { return StartTray(watcher); }
int32_t C_RVX::StartTray(TrayWatcher* watcher) { return parts_->trayController.Start(watcher); }

std::unique_ptr<Action> C_RVX::MakeAction(int index) {
  if (index < 0 || index >= static_cast<int>(parts_->actions.size())) throw new InvalidException;
  return parts_->actions[static_cast<size_t>(index)].make(*this);
}

Action* C_RVX::CreateActionByIndex(int32_t index) { return MakeAction(index).release(); }

Action* C_RVX::CreateActionFromText(const std::string& classKey) {
  for (const ActionTableEntry& entry : parts_->actions) {
    if (entry.classKey == classKey) return entry.make(*this).release();
  }
  throw new InvalidException;
}

std::string C_RVX::GetHelpFile() { return "RVX.HLP"; }

Action* C_RVX::CreateConfigAction(int32_t index) {
  if (index < 0 || index >= static_cast<int32_t>(std::size(kConfigActions))) {
    throw new InvalidException;
  }
  const ActionIndex action = kConfigActions[static_cast<size_t>(index)];
  if (action == kSetupAction && GetSecurityManager()->GetAccessLevel() < kLevelService) {
    throw new InvalidException;
  }
  return CreateActionByIndex(action);
}

Action* C_RVX::CreateSampleAction(int32_t kind) {
  switch (kind) {
    case kEmptySampleKind:
      return CreateActionByIndex(kNullAction);
    case kFirstSampleKind:
      // A cell without any constants can only run oils of known viscosity.
      return CreateActionByIndex(HasCellConstants(kAnyTemperature) ? kMeasureViscAction
                                                                   : kCheckViscAction);
    case kSecondSampleKind:
      if (HasCellConstants(kAnyTemperature)) return CreateActionByIndex(kCheckViscAction);
      break;
    default:
      break;
  }
  throw new InvalidException;
}

Action* C_RVX::CreateServiceAction(int32_t index) {
  if (index < 0 || index >= static_cast<int32_t>(std::size(kServiceActions))) {
    throw new InvalidException;
  }
  const ActionIndex action = kServiceActions[static_cast<size_t>(index)];
  if (action == kStepperAction) {
    const ConfigurationGuard guard(configuration_);
    if (!HasStepperService(configuration_.fields.modelCode)) throw new InvalidException;
  }
  return CreateActionByIndex(action);
}

TrayOfSampleActions* C_RVX::GetTray(int32_t index) {
  if (index != 0) throw new InvalidException;
  return &parts_->tray;
}

std::string C_RVX::GetTypeName() { return "RVX"; }
int32_t C_RVX::GetTrayCount() { return 1; }

std::string C_RVX::GetPortAddressText() { return parts_->texts.FormatPortAddress(GetAddress()); }

std::string C_RVX::GetInstrumentId() { return configuration_.GetInstrumentId(); }
std::string C_RVX::GetInstrumentName() { return configuration_.GetConfigurationId(); }

void C_RVX::PauseTray(int32_t /*tray*/, int32_t now) { parts_->trayController.Pause(now != 0); }
int32_t C_RVX::QueryPauseTray() { return parts_->trayController.QueryPause() ? 1 : 0; }
void C_RVX::ResumeTray(int32_t /*tray*/) { parts_->trayController.Resume(); }

int32_t C_RVX::ContinueTray() {
  if (IsTrayPaused() == 0) return 0;
  ResumeTray(0);
  return 1;
}

void C_RVX::SetInstrumentId(const std::string& text) {
  const std::string trimmed = platform::Trim(text);
  if (!trimmed.empty()) configuration_.SetInstrumentId(trimmed);
  GetInstrumentManager()->NotifyInstrumentChanged();
}

void C_RVX::SetInstrumentName(const std::string& text) {
  if (!text.empty()) {
    ConfigurationGuard guard(configuration_);
    configuration_.fields.configurationId = text;
  }
  GetInstrumentManager()->NotifyInstrumentChanged();
}

uint32_t C_RVX::GetRunFlags() {
  ConfigurationGuard guard(configuration_);
  return configuration_.fields.runFlags;
}

int32_t C_RVX::IsTrayRunning() { return (GetRunFlags() & kTrayRunning) != 0 ? 1 : 0; }

int32_t C_RVX::IsTrayActive() {
  return (GetRunFlags() & (kTrayRunning | kTrayPaused)) == kTrayRunning ? 1 : 0;
}

int32_t C_RVX::IsTrayPaused() {
  constexpr uint32_t kBoth = kTrayRunning | kTrayPaused;
  return (GetRunFlags() & kBoth) == kBoth ? 1 : 0;
}

int32_t C_RVX::IsIdle() {
  const StatusRecord record = parts_->status.Last().record;
  return (record.machineStatus() & kMachineNotReady) == 0 && IsTrayRunning() == 0 &&
                 record.switchByte() == 0
             ? 1
             : 0;
}

// --- The parts ---

void C_RVX::Receive(std::span<const uint8_t> bytes) { parts_->conversation->Receive(bytes); }

WindowHandle* C_RVX::ShowStatusWindow(WindowHandle* parent) {
  return parts_->statusWindow.Show(parent);
}

void C_RVX::CloseStatusWindow() { parts_->statusWindow.Close(); }

void C_RVX::AddErrorClient(InstrErrorClient* client) { parts_->errorClients.Add(client); }
void C_RVX::RemoveErrorClient(InstrErrorClient* client) { parts_->errorClients.Remove(client); }
CStandardsMap* C_RVX::GetStandards() { return parts_->standards.Get(); }
InstrumentUsers& C_RVX::users() { return parts_->users; }
platform::Event& C_RVX::closingEvent() { return parts_->closing; }
bool C_RVX::IsSimulatedInstrument() const { return parts_->line.isSimulated(); }
const std::string& C_RVX::Text(int stringId) const { return parts_->texts.Get(stringId); }

std::string C_RVX::FormatCheckStandardDue(int32_t samples) const {
  return parts_->texts.FormatCheckStandardDue(samples);
}

ActionErrorRecord C_RVX::MakeErrorRecord() {
  ActionErrorRecord record;
  record.source = this;
  record.typeName = GetTypeName();
  record.instrumentId = GetInstrumentId();
  GetSecurityManager()->GetUserName(record.operatorName);
  return record;
}

void C_RVX::ReportError(const ActionErrorRecord& record) {
  ActionException error(record);
  GetInstrumentManager()->ReportError(&error);
}

// --- The tray's actions ---

std::vector<std::shared_ptr<Action>> C_RVX::MakeEmptyTray() {
  int32_t positions = 0;
  {
    TrayGuard guard(parts_->tray);
    positions = parts_->tray.GetSize();
  }
  std::vector<std::shared_ptr<Action>> empty;
  empty.reserve(static_cast<size_t>(positions));
  while (static_cast<int32_t>(empty.size()) < positions) empty.push_back(MakeAction(kNullAction));
  return empty;
}

std::vector<std::shared_ptr<Action>> C_RVX::EmptyTray(std::vector<std::shared_ptr<Action>> empty) {
  TrayGuard guard(parts_->tray);
  return parts_->tray.ReplaceAll(std::move(empty));
}

void C_RVX::ReleaseTrayAction(int32_t index) {
  {
    TrayGuard guard(parts_->tray);
    if (index < 0 || index >= parts_->tray.GetSize()) throw new InvalidException;
  }
  parts_->userInterfaceJobs->Post([this, index] {
    std::shared_ptr<Action> removed;
    {
      std::shared_ptr<Action> empty = MakeAction(kNullAction);
      TrayGuard guard(parts_->tray);
      if (index < parts_->tray.GetSize()) removed = parts_->tray.Replace(index, std::move(empty));
    }
    if (removed) removed->Stop();
    removed.reset();
    GetInstrumentManager()->NotifyInstrumentChanged();
  });
}

}  // namespace rvx
