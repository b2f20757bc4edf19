#include "module/instrument/instrument_peer.h"

#include <algorithm>

#include "module/instrument/c_rvx.h"
#include "module/protocol/frames.h"
#include "module/protocol/identification.h"
#include "module/protocol/status_record.h"
#include "module/resources/string_ids.h"

namespace rvx {
namespace {

// The machine status bits that the check uses; its latch is cleared when none of them is set.
constexpr uint8_t kCheckedBits = 0xDC;
// Error codes with one of these bits are failures of the instrument itself or of the conversation.
// The codes from 0x40 have neither: they say that something can't be done now.
constexpr uint8_t kInstrumentFailureBits = 0xA0;
// The target of the cell when the conversation begins, in degrees C.
constexpr double kFirstTarget = 25.0;
// A stored status period of 0 or less would make the communications thread spin.
constexpr int32_t kMinStatusPeriod = 10;  // ms

}  // namespace

void InstrumentPeer::SendFrame(std::span<const uint8_t> frame) { parts_.line.Send(frame); }

void InstrumentPeer::PurgePort() { parts_.line.Purge(); }

platform::Milliseconds InstrumentPeer::GetStatusPeriod() {
  const ConfigurationGuard guard(parts_.configuration);
  return platform::Milliseconds(
      std::max(parts_.configuration.fields.statusPeriod, kMinStatusPeriod));
}

void InstrumentPeer::InstrumentNotResponding() {
  if (instrument_.IsTrayActive() != 0) instrument_.PauseTray(0, 1);
  ActionErrorRecord record = instrument_.MakeErrorRecord();
  record.message = instrument_.Text(kTextNotResponding);
  record.code = MessageCode::NotResponding;
  record.kind = 1;
  record.sampleFailure = 1;
  C_RVX::ReportError(record);
}

std::optional<StatusRecord> InstrumentPeer::KeepStatus(std::span<const uint8_t> data) {
  const std::optional<StatusRecord> record = parts_.line.isSimulated()
                                                 ? StatusRecord::FromSimulatorData(data)
                                                 : StatusRecord::FromData(data);
  if (record) parts_.status.Keep(*record);
  return record;
}

void InstrumentPeer::FollowStatus(const StatusRecord& record) {
  const uint8_t error = record.errorCode();
  if (error != 0 && !AsksForResend(error)) ReportInstrumentError(error);
  parts_.conversion.UpdateSupply(record);
  CheckMachineStatus(record.machineStatus());
  if (isFirstStatus_) {
    isFirstStatus_ = false;
    // Control off, but with a target: the instrument then holds the cell at a harmless temperature.
    instrument_.SetTemperatureControl(false, kFirstTarget, nullptr);
  }
  parts_.statusWindow.Refresh();
}

void InstrumentPeer::TakeIdentification(const std::string& identification) {
  const Identification parsed = ParseIdentification(identification);
  const ConfigurationGuard guard(parts_.configuration);
  ConfigurationFields& fields = parts_.configuration.fields;
  fields.modelCode = parsed.modelCode;
  fields.optionByte = parsed.optionByte;
  fields.firmwareVersion = parsed.firmwareVersion;
  fields.serialNumber = parsed.serialNumber;
}

void InstrumentPeer::KeepIdentity(std::span<const uint8_t> frame) {
  {
    const ConfigurationGuard guard(parts_.configuration);
    if (!parts_.line.isSimulated()) {
      const uint8_t address = parts_.configuration.fields.address;
      TakeIdentification(IdentificationText(AddressCharacter(address), frame));
    }
  }
  parts_.status.SetLastTag(kIdentityTag);
}

void InstrumentPeer::KeepSelfTest(uint16_t word) {
  {
    const ConfigurationGuard guard(parts_.configuration);
    parts_.configuration.fields.selfTestWord = word;
  }
  parts_.status.SetLastTag(kSelfTestTag);
}

void InstrumentPeer::FrameProcessed() { parts_.status.SetEvents(); }

void InstrumentPeer::CheckMachineStatus(uint8_t machineStatus) {
  const uint8_t checked = machineStatus & kCheckedBits;
  {
    const ConfigurationGuard guard(parts_.configuration);
    uint8_t& latched = parts_.configuration.fields.latchedMachineStatus;
    if (checked == 0) latched = 0;
    if ((checked & kMachineInitSteppers) == 0 || (latched & kMachineInitSteppers) != 0) return;
    latched = checked;
  }
  ActionErrorRecord record = instrument_.MakeErrorRecord();
  record.message = instrument_.Text(kTextInitializeSteppers);
  record.code = MessageCode::InitializeSteppers;
  C_RVX::ReportError(record);
}

void InstrumentPeer::ReportInstrumentError(uint8_t code) {
  if (parts_.errorClients.TakeCareOf(code)) return;
  ActionErrorRecord record = instrument_.MakeErrorRecord();
  record.message = instrument_.GetErrorText(code);
  record.code = MessageCodeOf(ErrorTextId(code));
  record.kind = (code & kInstrumentFailureBits) != 0 ? 1 : 0;
  record.sampleFailure = 1;
  C_RVX::ReportError(record);
}

}  // namespace rvx
