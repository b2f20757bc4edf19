// Life of an instrument, and its operations as the host's ViscometerInstrument.
#include "module/instrument/c_rvx.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <system_error>

#include "boundary/access_levels.h"
#include "module/calibration/standards_map.h"
#include "module/instrument/own_client.h"
#include "module/instrument/posted_jobs.h"
#include "module/instrument/simulate_setting.h"
#include "module/instrument/simulated_oils.h"
#include "module/instrument/simulator_line.h"
#include "module/instrument/temperature_offset.h"
#include "module/instrument/tray_controller.h"
#include "module/protocol/frames.h"
#include "module/protocol/identification.h"
#include "module/resources/string_ids.h"
#include "module/resources/string_table.h"
#include "platform/end_program.h"
#include "platform/prompt.h"
#include "platform/text.h"

namespace rvx {
namespace {

// A CAB that was queued at the end gets this long to go out; a dead line uses all of it.
constexpr platform::Milliseconds kLastCommands{4000};

// Loads on the user-interface thread what `load` wants.
class ResourceLoader : public UserInterfaceClient {
 public:
  explicit ResourceLoader(const std::function<void()>& load) : load_(load) {}
  FrameWindow* PerformCreation() override { return nullptr; }
  int32_t LoadResources() override {
    load_();
    return 0;
  }

 private:
  const std::function<void()>& load_;
};

}  // namespace

C_RVX::C_RVX(const std::string& portName, uint8_t address, const std::string& identification,
             const ActionTable& actions)
    : C_RVX(actions, OpenedLater()) {
  Open(portName, address, identification);
}

C_RVX::C_RVX(const ActionTable& actions, OpenedLater)
    : actions_(actions),
      simulated_(IsSimulated() != 0),
      trayController_(std::make_unique<TrayController>(*this)),
      ownClient_(std::make_unique<OwnClient>(*this)),
      postedJobs_(std::make_unique<PostedJobs>()) {}

void C_RVX::Open(const std::string& portName, uint8_t address, const std::string& identification) {
  conversation_ = std::make_unique<Conversation>(*this, address);
  LoadTexts();
  {
    ConfigurationGuard guard(configuration_);
    configuration_.portName = portName;
    configuration_.address = address;
    configuration_.responseTimeout = 6000;
  }
  Port* port = GetPortManager()->OpenPort(portName, this);
  {
    ConfigurationGuard guard(configuration_);
    configuration_.port = port;
  }
  const bool stored = LoadStoredSettings();
  {
    ConfigurationGuard guard(configuration_);
    configuration_.serialNumber.clear();
    configuration_.firmwareVersion.clear();
    TakeIdentification(identification.empty() ? std::string(kSimulatorIdentification)
                                              : identification);
    // Some defaults depend on the model, which is known only now.
    if (!stored) configuration_.SetDefaults();
    if (UsesTemperatureOffset(configuration_.modelCode) &&
        configuration_.temperatureOffset == 0.0) {
      configuration_.temperatureOffset = kUsualTemperatureOffset;
    }
  }
  // Behind the identification, which says whether the ninth temperature counts.
  LoadStandards();
  // The simulator stands before the thread that feeds it.
  if (simulated_) StartSimulator();
  conversation_->Start();
  open_ = true;
}

C_RVX::~C_RVX() { Close(); }

void C_RVX::Close() {
  if (!open_) return;
  if (IsOnOwnThread()) RefuseDestruction();
  open_ = false;
  try {
    GetInstrumentArchive()->StoreInstrument(GetArchiveKey(), this);
  } catch (ArchiveException* failure) {
    delete failure;  // the host has told its user; nothing can be done about it here
  }
  EndRunForDestruction();
  closing_.Set();
  WaitForUsers();
  conversation_->WaitUntilIdle(platform::Deadline::After(kLastCommands));
  conversation_->Stop();
  postedJobs_.reset();
  std::string portName;
  {
    ConfigurationGuard guard(configuration_);
    configuration_.port = nullptr;
    portName = configuration_.portName;
  }
  // Behind these two nothing calls Receive any more.
  simulatorLine_.reset();
  GetPortManager()->ClosePort(portName, this);
}

void C_RVX::StartSimulator() {
  try {
    simulatorLine_ = std::make_unique<SimulatorLine>(*this, MakeStoredRotor());
  } catch (const std::system_error&) {
    // Like an instrument that is switched off: it does not respond, and everything else works.
    ActionErrorRecord record = MakeErrorRecord();
    record.message = Text(kTextNoThread);
    record.code = MessageCode::NoThread;
    record.kind = 1;
    ReportError(record);
  }
}

void C_RVX::LoadTexts() {
  const std::function<void()> load = [this] {
    for (const int id : {kTextPortAddress, kTextNotReady, kTextInitializeSteppers,
                         kTextStopRunningSamples, kTextNotResponding, kTextTrayInUse, kTextNoThread,
                         kTextCheckStandardDue, kTextCheckStandardNeverRun, kTextCellTooWarm}) {
      texts_[id] = LoadResourceString(id);
    }
    statusTexts_ = StatusTexts::Load();
  };
  ResourceLoader loader(load);
  ExecuteLoadResources(&loader);
}

const std::string& C_RVX::Text(int stringId) const {
  static const std::string kNone;
  const auto found = texts_.find(stringId);
  return found != texts_.end() ? found->second : kNone;
}

std::string C_RVX::FormatCheckStandardDue(int32_t samples) const {
  std::string text = Text(kTextCheckStandardDue);
  const size_t place = text.find("%d");
  if (place != std::string::npos) text.replace(place, 2, std::to_string(samples));
  return text;
}

void C_RVX::TakeIdentification(const std::string& identification) {
  const Identification parsed = ParseIdentification(identification);
  ConfigurationGuard guard(configuration_);
  configuration_.modelCode = parsed.modelCode;
  configuration_.optionByte = parsed.optionByte;
  configuration_.firmwareVersion = parsed.firmwareVersion;
  configuration_.serialNumber = parsed.serialNumber;
}

void C_RVX::EndRunForDestruction() {
  if (IsTrayRunning() == 0) return;
  const platform::MessageAnswer answer = platform::GetPrompter().ShowMessage(
      Text(kTextStopRunningSamples), platform::MessageButtons::YesNo,
      platform::MessageIcon::Question);
  // The instrument is going away and its tray thread with it, so the answer No can't be granted. It
  // is not passed over in silence either.
  if (answer == platform::MessageAnswer::No && IsTrayRunning() != 0) {
    ActionErrorRecord record = MakeErrorRecord();
    record.message =
        "The tray was ended before all samples were run, because the instrument was closed. "
        "Samples "
        "that were finished are stored; start the tray again for the others.";
    record.kind = 1;
    ReportError(record);
  }
  trayController_->Abort();
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
  trayController_->Abort();
  return 1;
}

int32_t C_RVX::StartTrayFor(int32_t /*tray*/, TrayWatcher* watcher) { return StartTray(watcher); }
int32_t C_RVX::StartTray(TrayWatcher* watcher) { return trayController_->Start(watcher); }

std::unique_ptr<Action> C_RVX::MakeAction(int index) {
  if (index < 0 || index >= static_cast<int>(actions_.size())) throw new InvalidException;
  return actions_[static_cast<size_t>(index)].make(*this);
}

Action* C_RVX::CreateActionByIndex(int32_t index) { return MakeAction(index).release(); }

Action* C_RVX::CreateActionFromText(const std::string& classKey) {
  for (const ActionTableEntry& entry : actions_) {
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
      // Without any constants a cell can measure nothing but oils that are known.
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
    ConfigurationGuard guard(configuration_);
    if (configuration_.modelCode != '2' && configuration_.modelCode != '4') {
      throw new InvalidException;
    }
  }
  return CreateActionByIndex(action);
}

TrayOfSampleActions* C_RVX::GetTray(int32_t index) {
  if (index != 0) throw new InvalidException;
  return &tray_;
}

std::string C_RVX::GetTypeName() { return "RVX"; }
int32_t C_RVX::GetTrayCount() { return 1; }

std::string C_RVX::GetPortAddressText() {
  std::string text = Text(kTextPortAddress);
  const size_t place = text.find("%X");
  if (place != std::string::npos) {
    text.replace(place, 2, platform::FormatText("%X", GetAddress()));
  }
  return text;
}

std::string C_RVX::GetInstrumentId() { return configuration_.GetInstrumentId(); }
std::string C_RVX::GetInstrumentName() { return configuration_.GetConfigurationId(); }

void C_RVX::PauseTray(int32_t /*tray*/, int32_t now) { trayController_->Pause(now != 0); }
int32_t C_RVX::QueryPauseTray() { return trayController_->QueryPause() ? 1 : 0; }
void C_RVX::ResumeTray(int32_t /*tray*/) { trayController_->Resume(); }

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
    configuration_.configurationId = text;
  }
  GetInstrumentManager()->NotifyInstrumentChanged();
}

uint32_t C_RVX::GetRunFlags() {
  ConfigurationGuard guard(configuration_);
  return configuration_.runFlags;
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
  const StatusRecord record = GetStatusRecord();
  return (record.machineStatus() & kMachineNotReady) == 0 && IsTrayRunning() == 0 &&
                 record.switchByte() == 0
             ? 1
             : 0;
}

// --- Others ---

std::vector<std::shared_ptr<Action>> C_RVX::MakeEmptyTray() {
  int32_t positions = 0;
  {
    TrayGuard guard(tray_);
    positions = tray_.GetSize();
  }
  std::vector<std::shared_ptr<Action>> empty;
  empty.reserve(static_cast<size_t>(positions));
  while (static_cast<int32_t>(empty.size()) < positions) empty.push_back(MakeAction(kNullAction));
  return empty;
}

std::vector<std::shared_ptr<Action>> C_RVX::EmptyTray(std::vector<std::shared_ptr<Action>> empty) {
  TrayGuard guard(tray_);
  return tray_.ReplaceAll(std::move(empty));
}

void C_RVX::ReleaseTrayAction(int32_t index) {
  {
    TrayGuard guard(tray_);
    if (index < 0 || index >= tray_.GetSize()) throw new InvalidException;
  }
  postedJobs_->Post([this, index] {
    std::shared_ptr<Action> removed;
    {
      std::shared_ptr<Action> empty = MakeAction(kNullAction);
      TrayGuard guard(tray_);
      if (index < tray_.GetSize()) removed = tray_.Replace(index, std::move(empty));
    }
    if (removed) removed->Stop();
    removed.reset();
    GetInstrumentManager()->NotifyInstrumentChanged();
  });
}

void C_RVX::BeginUse() {
  platform::PlainGuard guard(usersLock_);
  ++users_;
}

void C_RVX::NoteOwnThread() {
  platform::PlainGuard guard(usersLock_);
  ownThreads_.push_back(platform::CurrentThreadId());
}

bool C_RVX::IsOnOwnThread() {
  if (conversation_->IsOnItsThreads()) return true;
  platform::PlainGuard guard(usersLock_);
  const platform::ThreadId here = platform::CurrentThreadId();
  return std::find(ownThreads_.begin(), ownThreads_.end(), here) != ownThreads_.end();
}

// The destructor would wait for the very thread that it is called on, for ever and in silence, with
// the instrument in the middle of a test. What can still be put in order is, then the program ends.
void C_RVX::RefuseDestruction() {
  trayController_->Abort();
  if (conversation_->IsOnSender()) {
    SendFrame(MakeFrame(AbortCommand(GetAddress())));  // the queue has nobody who would send it
  } else {
    SendAbort(nullptr);  // also for a test outside the tray
    // Commands before it are left out: no reply to them can be read if this thread reads them, and
    // one of them may start something. A limit, since the caller may hold what the thread wants.
    conversation_->StopWithin(platform::Deadline::After(kLastCommands));
  }
  platform::EndProgram(
      "an instrument is destroyed from inside a call that it makes (a watcher's, or the report of "
      "an "
      "error). The host program is at fault: it must let the call return first. The instrument is "
      "told to stop if it still can be, and the program ends; samples that were finished are "
      "stored. "
      "Look whether the instrument is at rest.");
}

void C_RVX::EndUse() {
  // Set under the lock: behind the unlock the waiting destructor may take the event away.
  platform::PlainGuard guard(usersLock_);
  std::erase(ownThreads_, platform::CurrentThreadId());
  if (--users_ == 0) unused_.Set();
}

void C_RVX::WaitForUsers() {
  for (;;) {
    {
      platform::PlainGuard guard(usersLock_);
      if (users_ == 0) return;
    }
    unused_.Wait();
  }
}

}  // namespace rvx
