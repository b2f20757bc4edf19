// The instrument: for the host a ViscometerInstrument, for actions and screens the one place to
// send commands and read the status.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "boundary/host.h"
#include "module/instrument/action_table.h"
#include "module/instrument/command.h"
#include "module/instrument/configuration_record.h"
#include "module/instrument/error_clients.h"
#include "module/instrument/instrument_users.h"
#include "module/instrument/monitor_readings.h"
#include "platform/event.h"

namespace rvx {

class CStandardsMap;
struct StatusReadings;

// A facade: each operation passes on to the part of the instrument that does the work
// (module/instrument/c_rvx_parts.h lists them).
class C_RVX : public ViscometerInstrument, public PortWatcher {
 public:
  // Opens the port, loads settings and standards, starts the conversation. `identification` is the
  // text of the discovery reply; empty for a simulated instrument. `actions` must outlive it.
  C_RVX(const std::string& portName, uint8_t address, const std::string& identification,
        const ActionTable& actions);
  // Stores the settings, asks about a run in progress and ends it, ends the threads, and closes the
  // port. Not on the user-interface thread, and not from a watcher's call.
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
  // Takes back what the client has queued: none of it is sent any more, and the client gets no
  // reply to it.
  void WithdrawCommands(const CommandClient* client);

  // --- Readings of the last status frame. Any thread. A caller that needs more than one of them
  // takes GetMonitorReadings: between two calls the next frame may come.
  // -----------------------------
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
  // All of one frame: converted, raw, number and time.
  void GetMonitorReadings(MonitorReadings& out);
  // Reads the status frame that came after number `sequence`, sets `sequence` to its number and
  // returns true. If none has come, reads the last frame again and returns false. So a thread that
  // runs late still sees every frame, unless it is more than kStatusHistory frames late.
  bool GetNextReadings(uint64_t& sequence, MonitorReadings& out);
  uint16_t GetSelfTestWord();
  // Elapsed or remaining seconds of the present operation: 1 if they count down, 0 if up.
  int32_t GetOperationTimer(int32_t& seconds);
  // The same at the time of these readings.
  int32_t GetOperationTimer(const MonitorReadings& readings, int32_t& seconds);
  std::string GetOperationText(uint8_t code);
  std::string GetErrorText(uint8_t code);  // empty for 0
  std::string GetMachineStatusText(uint8_t status);
  double GetFirmwareNumber();

  // Status frames received so far.
  uint64_t GetStatusSequence();
  // Sets `event` after each processed frame until it is removed. For threads that wait for a status
  // instead of polling.
  void AddStatusEvent(platform::Event* event);
  void RemoveStatusEvent(platform::Event* event);

  // --- Others ---------------------------------------------------------------------------------
  void SetRotorTime(int32_t seconds);  // of the present test point; -1: none
  // The standards, loaded if there are none yet; null if the archive failed. Any thread may read
  // them as long as this object lives, also after ReloadStandards. Only the user-interface thread
  // may change them, while no other thread reads.
  CStandardsMap* GetStandards();
  // Reads the standards again; throws ArchiveException on failure.
  void ReloadStandards();
  void AddErrorClient(InstrErrorClient* client);
  void RemoveErrorClient(InstrErrorClient* client);
  // Has the action of a tray position replaced by a CNullAction later, on the user-interface
  // thread. Throws InvalidException for an index beyond the tray.
  void ReleaseTrayAction(int32_t index);
  void LatchSupplyPair();
  static double CelsiusToFahrenheit(double celsius) { return celsius * 1.8 + 32; }
  static double FahrenheitToCelsius(double fahrenheit) { return (fahrenheit - 32) / 1.8; }
  void GetCellConstants(double temperature, double& b0, double& b1, double& b2);
  bool HasCellConstants(double temperature);
  int32_t GetResponseTimeout();   // ms
  bool IsManualInjectionModel();  // model codes "1" and "3"
  bool IsSimulatedInstrument() const;

  // The configuration lock, for direct access to `configuration().fields`.
  void Lock() ACQUIRE(configuration_) { configuration_.Lock(); }
  void Unlock() RELEASE(configuration_) { configuration_.Unlock(); }
  ConfigurationRecord& configuration() RETURN_CAPABILITY(configuration_) { return configuration_; }

  // The key of the settings text in the instrument archive, "RVX%s:%d".
  std::string GetArchiveKey();

  // An error record with source, type name, instrument id and operator filled in.
  ActionErrorRecord MakeErrorRecord();
  // Passes a record to ReportError of the instrument manager.
  static void ReportError(const ActionErrorRecord& record);

  // Who uses the instrument: its destructor waits for them. See InstrumentUse.
  InstrumentUsers& users();

  // Set for good when the destruction begins: screens that wait for it close.
  platform::Event& closingEvent();

  // A text of the instrument's text table, loaded once by the constructor.
  const std::string& Text(int stringId) const;
  // "A check standard is due ..." with the number of samples.
  std::string FormatCheckStandardDue(int32_t samples) const;

  // A CNullAction for every tray position, to be put in by TrayOfSampleActions::ReplaceAll. Call it
  // with no lock held, since it calls the functions of the table of actions.
  std::vector<std::shared_ptr<Action>> MakeEmptyTray();
  // Puts these into the tray. Returns the actions that were there: stop and drop them with no lock
  // held.
  [[nodiscard]] std::vector<std::shared_ptr<Action>> EmptyTray(
      std::vector<std::shared_ptr<Action>> empty);

 protected:
  // For a derived class. The threads must not call an object whose derived part is not yet
  // constructed or is already destroyed: such a class calls Open at the end of its constructor and
  // Close in its destructor.
  struct OpenedLater {};
  C_RVX(const ActionTable& actions, OpenedLater);
  // Opens the port, loads settings and standards, starts the threads.
  void Open(const std::string& portName, uint8_t address, const std::string& identification);
  // Does the work of the destructor. Without effect if Open has not succeeded, or when called
  // again.
  void Close();

 private:
  struct Parts;

  // Step of the construction: false if no settings were stored or they are damaged.
  bool LoadStoredSettings();
  void StartSimulator();
  // Steps of the destruction.
  void EndRunForDestruction();
  [[noreturn]] void RefuseDestruction();
  // Whether the caller is inside a call of this instrument's own threads.
  bool IsOnOwnThread();

  StatusReadings ReadForStatusWindow();
  std::unique_ptr<Action> MakeAction(int index);
  void ReplaceTray(const std::vector<std::string>& lines);
  std::vector<std::shared_ptr<Action>> ActionsFromText(const std::vector<std::string>& lines);
  uint32_t GetRunFlags();
  uint8_t GetAddress();

  ConfigurationRecord configuration_;
  const std::unique_ptr<Parts> parts_;
};

}  // namespace rvx
