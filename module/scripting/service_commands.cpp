// Identity, readings and the manual commands of an instrument by program.
#include <algorithm>

#include "module/instrument/problems.h"
#include "module/instrument/reply_error.h"
#include "module/instrument/service_access.h"
#include "module/protocol/frames.h"
#include "module/protocol/identification.h"
#include "module/protocol/status_record.h"
#include "module/scripting/scriptable_instrument.h"
#include "platform/text.h"

namespace rvx {
namespace {

// The largest target of each axis, in steps: tube down, last row of the table, end of the trolley.
struct AxisLimit {
  ServiceAxis axis;
  StepperSelector selector;
  int32_t most;
  const char* name;
};
constexpr AxisLimit kAxisLimits[] = {
    {ServiceAxis::Tube, StepperSelector::Tube, 942, "tube"},
    {ServiceAxis::Table, StepperSelector::Table, 615, "table"},
    {ServiceAxis::Trolley, StepperSelector::Trolley, 1620, "trolley"}};
constexpr double kColdest = -45.0;  // degrees C, below the lowest test temperature
constexpr double kWarmest = 25.0;   // the highest temperature that can be set by hand

// Waits for the reply to one command, and for the error that may come with it.
class ReplyWaiter : public CommandClient {
 public:
  explicit ReplyWaiter(C_RVX& instrument)
      : CommandClient(&instrument), instrument_(instrument), replyError_(instrument) {}
  ~ReplyWaiter() override { Detach(); }

  void CommandReply(const std::string& tag) override {
    const uint8_t error = replyError_.Take(tag);
    {
      platform::PlainGuard guard(lock_);
      answered_ = true;
      tag_ = tag;
      error_ = error;
    }
    answer_.Set();
  }

  // Returns nothing if the instrument has accepted the command.
  ScriptingResult Wait(std::string_view expectedTag, const std::string& what) {
    const platform::Deadline deadline =
        platform::Deadline::After(platform::Milliseconds(instrument_.GetResponseTimeout()));
    answer_.Wait(deadline);
    platform::PlainGuard guard(lock_);
    if (!answered_) {
      return Unable(Code::NoReply, "The instrument did not answer the command (" + what + ").",
                    "Check that it is switched on and its cable is plugged in, and try again.");
    }
    if (error_ != 0) {
      return Unable(Code::RefusedByInstrument,
                    platform::FormatText("The instrument refused the command (%s), code 0x%02x: ",
                                         what.c_str(), error_) +
                        instrument_.GetErrorText(error_));
    }
    if (tag_ != expectedTag) {
      return Unable(Code::RefusedByInstrument,
                    "The instrument would not take the command (" + what + ").");
    }
    return std::nullopt;
  }

 private:
  C_RVX& instrument_;
  ReplyError replyError_;
  platform::PlainLock lock_{"reply waiter", platform::kLeafRank};
  bool answered_ GUARDED_BY(lock_) = false;
  std::string tag_ GUARDED_BY(lock_);
  uint8_t error_ GUARDED_BY(lock_) = 0;
  platform::Event answer_{"reply waiter: answer"};
};

ScriptingResult CheckCellTemperature(double celsius, const char* alternative) {
  if (celsius >= kColdest && celsius <= kWarmest) return std::nullopt;
  return BadValue(Code::OutOfRange, Field::Temperature,
                  platform::FormatText("%g degC is out of range.", celsius),
                  platform::FormatText("%.f to %.f degC%s", kColdest, kWarmest, alternative),
                  kNothingSent);
}

ScriptingResult CheckStepperService(C_RVX& instrument) {
  char modelCode = 0;
  {
    ConfigurationGuard guard(instrument.configuration());
    modelCode = instrument.configuration().fields.modelCode;
  }
  if (HasStepperService(modelCode)) return std::nullopt;
  return Unable(Code::NoStepperService, "This model has no stepper service.", kNothingSent);
}

}  // namespace

InstrumentIdentity ScriptableInstrument::GetIdentity() {
  InstrumentIdentity identity;
  identity.archiveKey = GetArchiveKey();
  identity.simulated = IsSimulatedInstrument();
  const ConfigurationGuard guard(configuration());
  ConfigurationFields& record = configuration().fields;
  identity.portName = record.portName;
  identity.address = record.address;
  identity.modelCode = std::string(1, record.modelCode);
  identity.model = ModelName(record.modelCode, record.optionByte);
  identity.optionByte = record.optionByte;
  identity.options = OptionNames(record.optionByte);
  identity.firmware = record.firmwareVersion;
  identity.serialNumber = record.serialNumber;
  return identity;
}

InstrumentReadings ScriptableInstrument::GetReadings() {
  MonitorReadings status;
  GetMonitorReadings(status);
  InstrumentReadings readings;
  readings.sequence = status.frame.sequence;
  readings.time = status.frame.time;
  readings.intCount = status.intCount;
  readings.temperature = status.actualTemperature;
  if (status.targetTemperatureCounts != kCountsOff) {
    readings.targetTemperature = status.targetTemperature;
  }
  readings.plusVss = status.plusVss;
  readings.minusVss = status.minusVss;
  readings.speed = status.rotorSpeed;
  readings.machineStatus = status.machineStatus;
  readings.machineStatusText = GetMachineStatusText(status.machineStatus);
  readings.switchByte = status.switchByte;
  readings.operation = status.operation;
  readings.operationText = GetOperationText(status.operation);
  readings.errorCode = status.errorCode;
  readings.countsDown = GetOperationTimer(status, readings.seconds) != 0;
  return readings;
}

bool ScriptableInstrument::WaitForReadings(uint64_t after, const platform::Deadline& deadline) {
  platform::Event processed("readings");
  AddStatusEvent(&processed);
  bool arrived = GetStatusSequence() > after;
  while (!arrived && processed.Wait(deadline)) arrived = GetStatusSequence() > after;
  RemoveStatusEvent(&processed);
  return arrived;
}

ScriptingResult ScriptableInstrument::MayServe() { return FindServiceRefusal(*this); }

ScriptingResult ScriptableInstrument::SetHomeFlag() {
  if (ScriptingResult problem = FindServiceRefusal(*this)) return problem;
  if (ScriptingResult problem = CheckStepperService(*this)) return problem;
  ReplyWaiter waiter(*this);
  C_RVX::SetHomeFlag(&waiter);
  return waiter.Wait(kHomeFlagTag, "set home flag");
}

ScriptingResult ScriptableInstrument::SetTemperature(std::optional<double> celsius) {
  if (ScriptingResult problem = FindServiceRefusal(*this)) return problem;
  if (celsius) {
    if (ScriptingResult problem = CheckCellTemperature(*celsius, ", or off")) return problem;
  }
  ReplyWaiter waiter(*this);
  SetTemperatureControl(celsius.has_value(), celsius.value_or(kTemperatureOff), &waiter);
  return waiter.Wait(kTemperatureControlTag, "temperature control");
}

ScriptingResult ScriptableInstrument::ChillSimulatedCell(double celsius) {
  if (ScriptingResult problem = FindServiceRefusal(*this)) return problem;
  if (!IsSimulatedInstrument()) {
    return Unable(Code::NotSimulated, "This instrument is real: its cell is cooled by its chiller.",
                  kNothingSent);
  }
  if (ScriptingResult problem = CheckCellTemperature(celsius, "")) return problem;
  ReplyWaiter waiter(*this);
  SetTemperatureControl(0, celsius, &waiter);
  return waiter.Wait(kTemperatureControlTag, "chilling of the cell");
}

ScriptingResult ScriptableInstrument::SetSwitch(ServiceSwitch which, bool on) {
  if (ScriptingResult problem = FindServiceRefusal(*this)) return problem;
  ReplyWaiter waiter(*this);
  switch (which) {
    case ServiceSwitch::Injection:
      SetInjection(on, &waiter);
      return waiter.Wait(kInjectionTag, "injection switch");
    case ServiceSwitch::Motor:
      SetTestMotor(on, &waiter);
      return waiter.Wait(kTestMotorTag, "test motor switch");
    case ServiceSwitch::Cooling:
      SetCooling(on, &waiter);
      return waiter.Wait(kCoolingTag, "cooling switch");
    case ServiceSwitch::AutoReport:
      SetAutoReport(on, &waiter);
      return waiter.Wait(kAutoReportTag, "auto report switch");
  }
  return std::nullopt;
}

ScriptingResult ScriptableInstrument::JogAxis(ServiceAxis axis, int32_t target) {
  if (ScriptingResult problem = FindServiceRefusal(*this)) return problem;
  if (ScriptingResult problem = CheckStepperService(*this)) return problem;
  const AxisLimit& limit = *std::find_if(std::begin(kAxisLimits), std::end(kAxisLimits),
                                         [axis](const AxisLimit& l) { return l.axis == axis; });
  if (target < 0 || target > limit.most) {
    return BadValue(Code::OutOfRange, Field::Target,
                    platform::FormatText("%d is out of the way of the %s.", target, limit.name),
                    platform::FormatText("0 to %d steps", limit.most), kNothingSent);
  }
  ReplyWaiter waiter(*this);
  MoveStepper(static_cast<uint8_t>(limit.selector), static_cast<uint16_t>(target), &waiter);
  return waiter.Wait(kMoveStepperTag, std::string("move the ") + limit.name);
}

ScriptingResult ScriptableInstrument::AbortOperation() {
  // Also while a tray runs: the instrument must stop at once.
  if (ScriptingResult problem = CheckLevel(kLevelOperator, "A service command")) return problem;
  ReplyWaiter waiter(*this);
  SendAbort(&waiter);
  return waiter.Wait(kAbortTag, "abort");
}

ScriptingResult ScriptableInstrument::RunSelfTest(std::vector<std::string>& failures) {
  if (ScriptingResult problem = FindServiceRefusal(*this)) return problem;
  ReplyWaiter waiter(*this);
  QuerySelfTest(&waiter);
  if (ScriptingResult problem = waiter.Wait(kSelfTestTag, "self test")) return problem;
  failures = SelfTestFailures(GetSelfTestWord());
  return std::nullopt;
}

}  // namespace rvx
