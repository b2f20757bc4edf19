// What follows from the frames that an instrument sends, and how its failures are reported.
#include <algorithm>

#include "module/instrument/c_rvx.h"
#include "module/instrument/simulator_line.h"
#include "module/instrument/tray_controller.h"
#include "module/protocol/frames.h"
#include "module/protocol/identification.h"
#include "module/protocol/status_record.h"
#include "module/resources/string_ids.h"

namespace rvx {
namespace {

// The machine status bits that the check looks at; without any of them its latch is cleared.
constexpr uint8_t kCheckedBits = 0xDC;
// Error codes with one of these bits are failures of the instrument itself or of the conversation.
// The family 0x40 has neither: its codes say that something can't be done now.
constexpr uint8_t kInstrumentFailureBits = 0xA0;
// Where the cell is sent when the conversation begins, in degrees C.
constexpr double kFirstTarget = 25.0;

}  // namespace

void C_RVX::Receive(std::span<const uint8_t> bytes) { conversation_->Receive(bytes); }

void C_RVX::SendFrame(std::span<const uint8_t> frame) {
  if (simulated_) {
    if (simulatorLine_) simulatorLine_->Feed(std::string(frame.begin(), frame.end()));
    return;
  }
  Port* port = nullptr;
  {
    ConfigurationGuard guard(configuration_);
    port = configuration_.port;
  }
  if (port != nullptr) port->Write(frame);
}

void C_RVX::PurgePort() {
  Port* port = nullptr;
  {
    ConfigurationGuard guard(configuration_);
    port = configuration_.port;
  }
  if (port != nullptr) port->Purge();
}

platform::Milliseconds C_RVX::GetStatusPeriod() {
  ConfigurationGuard guard(configuration_);
  // A stored period of 0 or less would make the thread spin.
  return platform::Milliseconds(std::max(configuration_.statusPeriod, 10));
}

void C_RVX::InstrumentNotResponding() {
  if (IsTrayActive() != 0) PauseTray(0, 1);
  ActionErrorRecord record = MakeErrorRecord();
  record.message = Text(kTextNotResponding);
  record.code = MessageCode::NotResponding;
  record.kind = 1;
  record.sampleFailure = 1;
  ReportError(record);
}

std::optional<StatusRecord> C_RVX::KeepStatus(std::span<const uint8_t> data) {
  const std::optional<StatusRecord> record =
      simulated_ ? StatusRecord::FromSimulatorData(data) : StatusRecord::FromData(data);
  if (!record) return std::nullopt;
  const platform::Microseconds now = platform::MonotonicTime();
  platform::PlainGuard guard(statusLock_);
  status_ = *record;
  statusTime_ = now;
  ++statusSequence_;
  statusHistory_[statusSequence_ % kStatusHistory] = *record;
  return record;
}

void C_RVX::FollowStatus(const StatusRecord& record) {
  const uint8_t error = record.errorCode();
  if (error != 0 && !AsksForResend(error)) ReportInstrumentError(error);
  {
    platform::PlainGuard guard(supplyLock_);
    supply_.Update(CountsToSupplyVolts(record.plusVssCounts()),
                   CountsToSupplyVolts(record.minusVssCounts()));
  }
  CheckMachineStatus(record.machineStatus());
  if (firstStatus_) {
    firstStatus_ = false;
    // Enable byte off, but with a target: the instrument then holds the cell where it is harmless.
    SetTemperatureControl(false, kFirstTarget, nullptr);
  }
  RefreshStatusWindow();
}

void C_RVX::KeepIdentity(std::span<const uint8_t> frame) {
  {
    ConfigurationGuard guard(configuration_);
    if (!simulated_) {
      TakeIdentification(IdentificationText(AddressCharacter(configuration_.address), frame));
    }
  }
  platform::PlainGuard guard(statusLock_);
  status_.SetLastTag(kIdentityTag);
}

void C_RVX::KeepSelfTest(uint16_t word) {
  {
    ConfigurationGuard guard(configuration_);
    configuration_.selfTestWord = word;
  }
  platform::PlainGuard guard(statusLock_);
  status_.SetLastTag(kSelfTestTag);
}

void C_RVX::FrameProcessed() {
  platform::PlainGuard guard(statusEventsLock_);
  for (platform::Event* event : statusEvents_) event->Set();
}

void C_RVX::CheckMachineStatus(uint8_t machineStatus) {
  const uint8_t checked = machineStatus & kCheckedBits;
  {
    ConfigurationGuard guard(configuration_);
    if (checked == 0) configuration_.latchedMachineStatus = 0;
    if ((checked & kMachineInitSteppers) == 0 ||
        (configuration_.latchedMachineStatus & kMachineInitSteppers) != 0) {
      return;
    }
    configuration_.latchedMachineStatus = checked;
  }
  ActionErrorRecord record = MakeErrorRecord();
  record.message = Text(kTextInitializeSteppers);
  record.code = MessageCode::InitializeSteppers;
  ReportError(record);
}

void C_RVX::ReportInstrumentError(uint8_t code) {
  {
    platform::RecursiveGuard guard(errorClientsLock_);
    for (InstrErrorClient* client : errorClients_) {
      if (client->InstrumentError(code) != 0) return;
    }
  }
  ActionErrorRecord record = MakeErrorRecord();
  record.message = GetErrorText(code);
  record.code = MessageCodeOf(ErrorTextId(code));
  record.kind = (code & kInstrumentFailureBits) != 0 ? 1 : 0;
  record.sampleFailure = 1;
  ReportError(record);
}

void C_RVX::AddErrorClient(InstrErrorClient* client) {
  platform::RecursiveGuard guard(errorClientsLock_);
  errorClients_.push_back(client);
}

void C_RVX::RemoveErrorClient(InstrErrorClient* client) {
  platform::RecursiveGuard guard(errorClientsLock_);
  std::erase(errorClients_, client);
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

}  // namespace rvx
