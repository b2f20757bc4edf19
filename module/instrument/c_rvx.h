// The instrument: for the host a ViscometerInstrument, for actions and screens the one place to
// send commands and read the status.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "boundary/host.h"
#include "module/instrument/action_table.h"
#include "module/instrument/command.h"
#include "module/instrument/configuration_record.h"
#include "module/instrument/conversation.h"
#include "module/instrument/lock_ranks.h"
#include "module/instrument/monitor_readings.h"
#include "module/instrument/operation_timer.h"
#include "module/instrument/status_window.h"
#include "module/protocol/conversions.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace rvx {

class CStandardsMap;
class PostedJobs;
class SimulatorLine;
class TrayController;

// Takes care of an instrument's error itself by answering non-zero. Called on the reader's thread.
class InstrErrorClient {
 public:
  virtual ~InstrErrorClient() = default;
  virtual int32_t InstrumentError(uint8_t code) = 0;
};

// Status frames that are kept for threads that run late: two minutes of a run. A thread that is
// held up for longer loses readings.
inline constexpr size_t kStatusHistory = 256;

class C_RVX : public ViscometerInstrument, public PortWatcher, public ConversationPeer {
 public:
  // Opens the port, loads settings and standards, starts the conversation. `identification` is the
  // text of the discovery reply; empty for a simulated instrument. `actions` must outlive it.
  C_RVX(const std::string& portName, uint8_t address, const std::string& identification,
        const ActionTable& actions);
  // Stores the settings, ends a run (asking about it), then the threads, and closes the port.
  // Not on the user-interface thread, and not from a watcher's call.
  ~C_RVX() override;

  // --- ViscometerInstrument -------------------------------------------------------------------
  void StopTray(int32_t tray) override;
  int32_t QueryAbortTray() override;
  int32_t StartTrayFor(int32_t tray, TrayWatcher* watcher) override;
  int32_t StartTray(TrayWatcher* watcher) override;
  Action* CreateActionFromText(const std::string& classKey) override;
  Action* CreateActionByIndex(int32_t index) override;
  std::string GetHelpFile() override;
  Action* CreateConfigAction(int32_t index) override;
  Action* CreateSampleAction(int32_t kind) override;
  Action* CreateServiceAction(int32_t index) override;
  std::string SaveSettingsText() override;
  WindowHandle* ShowStatusWindow(WindowHandle* parent) override;
  void CloseStatusWindow() override;
  TrayOfSampleActions* GetTray(int32_t index) override;
  std::string GetTypeName() override;
  int32_t GetTrayCount() override;
  std::string GetPortAddressText() override;
  std::string GetInstrumentId() override;
  std::string GetInstrumentName() override;
  void PauseTray(int32_t tray, int32_t now) override;
  int32_t QueryPauseTray() override;
  void ResumeTray(int32_t tray) override;
  int32_t ContinueTray() override;
  void LoadSettingsText(const std::string& text, int32_t flags) override;
  void SetInstrumentId(const std::string& text) override;
  void SetInstrumentName(const std::string& text) override;
  int32_t IsTrayRunning() override;
  int32_t IsTrayActive() override;
  int32_t IsTrayPaused() override;
  int32_t IsIdle() override;

  // --- PortWatcher ----------------------------------------------------------------------------
  void Receive(std::span<const uint8_t> bytes) override;

  // --- Command builders: each queues one command and returns 1 at once. `client` null: the
  // instrument's own, which keeps the tag as the last reply. Any thread. ------------------------
  int32_t SendAbort(CommandClient* client);
  int32_t SetInjection(bool on, CommandClient* client);
  int32_t SetAutoReport(bool on, CommandClient* client);
  int32_t SetTestMotor(bool on, CommandClient* client);
  int32_t SetCooling(bool on, CommandClient* client);
  int32_t SetHomeFlag(CommandClient* client);
  int32_t RunMotorCurrent(int32_t position, CommandClient* client);
  int32_t MoveStepper(uint8_t selector, uint16_t target, CommandClient* client);
  int32_t MoveToPosition(int32_t position, CommandClient* client);
  int32_t PreconditionMotor(CommandClient* client);
  int32_t SetModel(char model, uint8_t option, CommandClient* client);
  int32_t SetSerialNumber(const std::string& text, CommandClient* client);
  // Values from `test`, a copy that the caller owns, at test point `index`.
  int32_t StartTest(int32_t position, int32_t index, TestRecord& test, CommandClient* client);
  // temperature in degrees C; kTemperatureOff sends "off".
  int32_t SetTemperatureControl(bool on, double temperature, CommandClient* client);
  int32_t UserAcknowledge(CommandClient* client);
  int32_t QueryIdentity(CommandClient* client);
  int32_t QuerySelfTest(CommandClient* client);
  void QueueCommand(const std::string& text, CommandClient* client);
  // Takes a client out of the queue and of the pending command; no reply reaches it afterwards.
  void ForgetClient(CommandClient* client);
  // Takes back what the client has queued: no more of it goes out, and no reply to it comes.
  void WithdrawCommands(const CommandClient* client);

  // --- Readings of the last status record. Any thread. ----------------------------------------
  uint16_t GetIntCount();
  double GetTemperature();        // degrees C
  double GetTargetTemperature();  // degrees C; exactly 65535.0 when off
  uint16_t GetTemperatureCounts();
  uint16_t GetTargetCounts();
  double GetPlusVss();                             // V
  double GetMinusVss();                            // V
  void GetPairInUse(double& plus, double& minus);  // V
  double GetRotorSpeed();                          // rpm/1000
  uint8_t GetMachineStatus();
  uint8_t GetSwitchByte();
  uint8_t GetOperation();
  uint8_t GetErrorCode();
  uint8_t GetPromptFlag();  // 0 on models that inject by themselves
  std::string GetLastTag();
  void GetRawStatus(std::array<uint8_t, 19>& out);
  void GetMonitorReadings(MonitorReadings& out);
  // The readings of the status frame that came behind number `sequence`, which becomes that frame's
  // number: true. Those of the last one again if there is none: false. So a thread that runs late
  // still sees every frame, unless it is more than kStatusHistory of them late.
  bool GetNextReadings(uint64_t& sequence, MonitorReadings& out);
  uint16_t GetSelfTestWord();
  // Elapsed or remaining seconds of the present operation: 1 if they count down, 0 if up.
  int32_t GetOperationTimer(int32_t& seconds);
  std::string GetOperationText(uint8_t code);
  std::string GetErrorText(uint8_t code);  // empty for 0
  std::string GetMachineStatusText(uint8_t status);
  double GetFirmwareNumber();

  // Status frames received so far.
  uint64_t GetStatusSequence();
  // Sets `event` behind each processed frame and at each change that a waiting sequencer wants to
  // see, until it is removed. For threads that wait for a status instead of polling.
  void AddStatusEvent(platform::Event* event);
  void RemoveStatusEvent(platform::Event* event);

  // --- Others ---------------------------------------------------------------------------------
  void SetRotorTime(int32_t seconds);  // of the present test point; -1: none
  // The standards, loaded if there are none yet; null if the archive failed. Any thread may read
  // them, as long as this object lives, also when they are read again meanwhile. Changing them is
  // for the user-interface thread, while nobody else reads.
  CStandardsMap* GetStandards();
  // Reads the standards again; ArchiveException on failure.
  void ReloadStandards();
  void AddErrorClient(InstrErrorClient* client);
  void RemoveErrorClient(InstrErrorClient* client);
  // Replaces the action of a tray position by a CNullAction, later, on the user-interface thread.
  // InvalidException for an index beyond the tray.
  void ReleaseTrayAction(int32_t index);
  void LatchSupplyPair();
  static double CelsiusToFahrenheit(double celsius) { return celsius * 1.8 + 32; }
  static double FahrenheitToCelsius(double fahrenheit) { return (fahrenheit - 32) / 1.8; }
  void GetCellConstants(double temperature, double& b0, double& b1, double& b2);
  bool HasCellConstants(double temperature);
  int32_t GetResponseTimeout();   // ms
  bool IsManualInjectionModel();  // model codes "1" and "3"
  bool IsSimulatedInstrument() const { return simulated_; }

  // The configuration lock, for direct access to the record.
  void Lock() ACQUIRE(configuration_) { configuration_.Lock(); }
  void Unlock() RELEASE(configuration_) { configuration_.Unlock(); }
  ConfigurationRecord& configuration() RETURN_CAPABILITY(configuration_) { return configuration_; }

  // The key of the settings text in the instrument archive, "RVX%s:%d".
  std::string GetArchiveKey();

  // An error record with source, type name, instrument id and operator filled in.
  ActionErrorRecord MakeErrorRecord();
  // Gives a record to ReportError of the instrument manager.
  static void ReportError(const ActionErrorRecord& record);

  // A thread that works on this instrument counts from before its start to its very end, so that
  // the destructor can wait for it: the thread of an action may still be ending after its action is
  // gone. The starter makes an InstrumentUse (shared) and the thread's function owns it.
  void BeginUse();
  void EndUse();
  // Such a thread says at its start that it is one.
  void NoteOwnThread();

  // Set for good when the destruction begins: screens that wait for it close.
  platform::Event& closingEvent() { return closing_; }

  // A text of the instrument's text table, loaded once by the constructor.
  const std::string& Text(int stringId) const;
  // "A check standard is due ..." with the number of samples.
  std::string FormatCheckStandardDue(int32_t samples) const;

  // A CNullAction for every tray position, to be put in by TrayOfSampleActions::ReplaceAll. Call it
  // with no lock held, since it asks the table of actions, which may be a host's.
  std::vector<std::shared_ptr<Action>> MakeEmptyTray();
  // Puts these in. The actions that stood there come back: stop and drop them with no lock held.
  [[nodiscard]] std::vector<std::shared_ptr<Action>> EmptyTray(
      std::vector<std::shared_ptr<Action>> empty);

 protected:
  // For a class on top of this one. An object must not be called by its threads while it still
  // becomes, or no longer is, what it is: such a class calls Open at the end of its constructor and
  // Close in its destructor.
  struct OpenedLater {};
  C_RVX(const ActionTable& actions, OpenedLater);
  // Opens the port, loads settings and standards, starts the threads.
  void Open(const std::string& portName, uint8_t address, const std::string& identification);
  // What the destructor does; without effect if Open has not succeeded, or the second time.
  void Close();

 private:
  class OwnClient;

  // --- ConversationPeer -----------------------------------------------------------------------
  void SendFrame(std::span<const uint8_t> frame) override;
  void PurgePort() override;
  platform::Milliseconds GetStatusPeriod() override;
  void InstrumentNotResponding() override;
  std::optional<StatusRecord> KeepStatus(std::span<const uint8_t> data) override;
  void FollowStatus(const StatusRecord& record) override;
  void KeepIdentity(std::span<const uint8_t> frame) override;
  void KeepSelfTest(uint16_t word) override;
  void FrameProcessed() override;

  // Steps of the construction.
  void LoadTexts();
  void StartSimulator();
  bool LoadStoredSettings();  // false: nothing was stored
  void TakeIdentification(const std::string& identification);
  // Steps of the destruction.
  void EndRunForDestruction();
  void WaitForUsers();
  // Whether the caller is inside a call of this instrument's own threads.
  bool IsOnOwnThread();
  [[noreturn]] void RefuseDestruction();

  void CheckMachineStatus(uint8_t machineStatus);
  // Hands the present readings to the status window, if there is one. Any thread, with no lock
  // held.
  void RefreshStatusWindow();
  StatusReadings ReadForStatusWindow();
  void ReportInstrumentError(uint8_t code);
  bool LoadStandards();
  void ReplaceTray(const std::vector<std::string>& lines);
  std::vector<std::shared_ptr<Action>> ActionsFromText(const std::vector<std::string>& lines);
  std::unique_ptr<Action> MakeAction(int index);
  // Everything that a conversion of counts needs.
  struct Conversion {
    ProbeConstants probe;
    SupplyPair pair;
    char modelCode = 0;
    double offset = 0.0;  // degrees C
    uint8_t optionByte = 0;
  };
  Conversion GetConversion();
  StatusRecord GetStatusRecord();
  void ConvertStatus(const StatusRecord& record, MonitorReadings& out);
  // The counts of a temperature that a command carries; latches the supply pair.
  double CountsForCommand(double temperature);
  double GetInjectionTemperature();
  void KeepSentInjectionTime(int32_t seconds);
  uint8_t GetAddress();
  uint32_t GetRunFlags();

  const ActionTable& actions_;        // constant after construction
  std::map<int, std::string> texts_;  // constant after construction
  StatusTexts statusTexts_;           // constant after construction
  bool simulated_ = false;            // constant after construction
  bool open_ = false;                 // constructor and destructor alone

  ConfigurationRecord configuration_;

  platform::PlainLock statusLock_{"status", kStatusLockRank};
  StatusRecord status_ GUARDED_BY(statusLock_);
  uint64_t statusSequence_ GUARDED_BY(statusLock_) = 0;
  platform::Microseconds statusTime_ GUARDED_BY(statusLock_){0};  // MonotonicTime of the last frame
  // Frame n stands at n modulo the size.
  std::array<StatusRecord, kStatusHistory> statusHistory_ GUARDED_BY(statusLock_);

  platform::PlainLock supplyLock_{"supply means", platform::kLeafRank};
  SupplyMeans supply_ GUARDED_BY(supplyLock_);

  platform::PlainLock rotorTimeLock_{"rotor time", platform::kLeafRank};
  int32_t rotorTime_ GUARDED_BY(rotorTimeLock_) = -1;  // s

  platform::PlainLock timerLock_{"operation timer", platform::kLeafRank};
  OperationTimer timer_ GUARDED_BY(timerLock_);

  platform::RecursiveLock errorClientsLock_{"error clients", kErrorClientsLockRank};
  std::vector<InstrErrorClient*> errorClients_ GUARDED_BY(errorClientsLock_);  // not owned

  platform::PlainLock statusEventsLock_{"status events", platform::kLeafRank - 1};
  std::vector<platform::Event*> statusEvents_ GUARDED_BY(statusEventsLock_);  // not owned

  platform::PlainLock usersLock_{"instrument users", platform::kLeafRank};
  int32_t users_ GUARDED_BY(usersLock_) = 0;
  std::vector<platform::ThreadId> ownThreads_ GUARDED_BY(usersLock_);
  platform::Event unused_{"instrument: no user left"};
  platform::Event closing_{"instrument closes", platform::Event::Mode::ManualReset};

  platform::RecursiveLock statusWindowLock_{"status window", kStatusWindowLockRank};
  std::unique_ptr<StatusWindow> statusWindow_ GUARDED_BY(statusWindowLock_);
  std::atomic<bool> hasStatusWindow_{false};  // so that frames without a window take no lock

  TrayOfSampleActions tray_{kTrayLockRank};
  std::unique_ptr<TrayController> trayController_;
  platform::PlainLock standardsLock_{"standards", platform::kLeafRank};
  CStandardsMap* standards_ GUARDED_BY(standardsLock_) = nullptr;
  // Two threads may read them at once: what was begun first and comes last is not taken.
  uint64_t standardsReads_ GUARDED_BY(standardsLock_) = 0;  // begun
  uint64_t standardsRead_ GUARDED_BY(standardsLock_) = 0;   // the last one taken
  // All that were read: a dialog may still look at an older list.
  std::vector<std::unique_ptr<CStandardsMap>> standardLists_ GUARDED_BY(standardsLock_);
  std::atomic<bool> settingsTaken_{false};  // by the last LoadSettingsText
  bool firstStatus_ = true;                 // only the thread that hands over received bytes

  std::unique_ptr<Conversation> conversation_;
  std::unique_ptr<OwnClient> ownClient_;
  std::unique_ptr<SimulatorLine> simulatorLine_;
  std::unique_ptr<PostedJobs> postedJobs_;
};

// Counts one thread for as long as it lives; hand it to the thread by std::shared_ptr.
class InstrumentUse {
 public:
  explicit InstrumentUse(C_RVX& instrument) : instrument_(instrument) { instrument_.BeginUse(); }
  // At the thread's start.
  void NoteOwnThread() { instrument_.NoteOwnThread(); }
  ~InstrumentUse() { instrument_.EndUse(); }
  InstrumentUse(const InstrumentUse&) = delete;
  InstrumentUse& operator=(const InstrumentUse&) = delete;

 private:
  C_RVX& instrument_;
};

}  // namespace rvx
