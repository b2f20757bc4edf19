#include "module/instrument/configuration_record.h"

#include <string_view>
#include <vector>

#include "module/instrument/record_text.h"
#include "module/protocol/identification.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr char kSeparator = '\x0B';
// Characters that a text field can't hold: the field's end and the end of a settings line.
constexpr std::string_view kReserved = "\x0B\n";

constexpr size_t kFieldCount = 52;
constexpr size_t kLeastFieldCount = 44;
constexpr size_t kFieldsWithOffset = 45;
constexpr size_t kFieldsWithNinthSlot = 49;

constexpr int kFrontSlots = 8;  // the ninth slot's fields stand behind the offset
constexpr size_t kIdentityFields = 4;
constexpr size_t kCalibrationFields = 4 + kFrontSlots * 4;
constexpr size_t kParameterFields = 2;

double DefaultInjectionTemperature(char modelCode) {
  return static_cast<unsigned char>(modelCode) < '3' ? -5.0 : 15.0;
}

// Everything but the lock; the test record by its own operation.
void CopyFields(ConfigurationRecord& to, const ConfigurationRecord& from) {
  to.instrumentId = from.instrumentId;
  to.configurationId = from.configurationId;
  to.responseTimeout = from.responseTimeout;
  to.serialNumber = from.serialNumber;
  to.firmwareVersion = from.firmwareVersion;
  to.trayPositions = from.trayPositions;
  to.statusPeriod = from.statusPeriod;
  to.probeId = from.probeId;
  to.a0 = from.a0;
  to.a1 = from.a1;
  to.a2 = from.a2;
  to.b0 = from.b0;
  to.b1 = from.b1;
  to.b2 = from.b2;
  to.checkStandardFlag = from.checkStandardFlag;
  to.checkStandardInterval = from.checkStandardInterval;
  to.samplesSinceCheck = from.samplesSinceCheck;
  to.injectionTemperature = from.injectionTemperature;
  to.calibrationDates = from.calibrationDates;
  to.testRecord = from.testRecord;
  to.temperatureOffset = from.temperatureOffset;
  to.portName = from.portName;
  to.address = from.address;
  to.modelCode = from.modelCode;
  to.optionByte = from.optionByte;
  to.selfTestWord = from.selfTestWord;
  to.latchedMachineStatus = from.latchedMachineStatus;
  to.lastReply = from.lastReply;
  to.runFlags = from.runFlags;
  to.port = from.port;
}

void WriteSlot(RecordWriter& writer, const ConfigurationRecord& record, size_t slot) {
  writer.Double(record.b0[slot]).Double(record.b1[slot]).Double(record.b2[slot]);
  writer.Date(record.calibrationDates[slot]);
}

void ReadSlot(RecordReader& reader, ConfigurationRecord& record, size_t slot) {
  record.b0[slot] = reader.Double();
  record.b1[slot] = reader.Double();
  record.b2[slot] = reader.Double();
  record.calibrationDates[slot] = reader.Date();
}

}  // namespace

ConfigurationRecord::ConfigurationRecord() : instrumentId("RVX"), configurationId("Unsaved") {
  // The date of a slot that was never calibrated.
  calibrationDates.fill(platform::Date(1938, 1, 1));
}

ConfigurationRecord::ConfigurationRecord(const ConfigurationRecord& other)
    : testRecord(other.testRecord) {
  const ConfigurationGuard guard(other);
  CopyFields(*this, other);
}

ConfigurationRecord& ConfigurationRecord::operator=(const ConfigurationRecord& other) {
  if (this != &other) Assign(other);
  return *this;
}

void ConfigurationRecord::Lock() const { lock_.Lock(); }

void ConfigurationRecord::Unlock() const { lock_.Unlock(); }

void ConfigurationRecord::SetDefaults() {
  // Made before the lock is taken: its defaults ask the host.
  TestRecord defaults;

  const ConfigurationGuard guard(*this);
  instrumentId = "RVX";
  trayPositions = 30;
  responseTimeout = 6000;
  statusPeriod = 495;
  injectionTemperature = DefaultInjectionTemperature(modelCode);
  checkStandardFlag = 0;
  checkStandardInterval = 25;
  samplesSinceCheck = kNeverChecked;
  defaults.sentInjectionTime = testRecord.sentInjectionTime;
  testRecord = defaults;
}

void ConfigurationRecord::Assign(const ConfigurationRecord& other) {
  if (this == &other) return;
  // By way of a copy, so that the locks of two records are never held together.
  const ConfigurationRecord copy(other);
  const ConfigurationGuard guard(*this);
  CopyFields(*this, copy);
}

std::string ConfigurationRecord::ToText() const {
  const ConfigurationGuard guard(*this);
  RecordWriter writer(kSeparator);
  writer.Text(configurationId, kReserved);
  writer.Text(instrumentId, kReserved).Text(serialNumber, kReserved);
  writer.Int(trayPositions).Int(responseTimeout);
  writer.Int(statusPeriod).Text(probeId, kReserved).Double(a0).Double(a1).Double(a2);
  for (size_t slot = 0; slot < kFrontSlots; ++slot) WriteSlot(writer, *this, slot);
  writer.Double(injectionTemperature).Raw(testRecord.ToText());
  writer.Double(temperatureOffset);
  WriteSlot(writer, *this, kFrontSlots);
  writer.Int(checkStandardFlag).Int(checkStandardInterval).Int(samplesSinceCheck);
  return writer.Take();
}

bool ConfigurationRecord::FromText(const std::string& text, int32_t flags) {
  const std::vector<std::string> fields = platform::SplitFields(text, kSeparator, kFieldCount);
  if (fields.size() < kLeastFieldCount) return false;
  RecordReader reader(fields);

  const ConfigurationGuard guard(*this);
  configurationId = reader.Text();
  if ((flags & kLoadIdentity) != 0) {
    instrumentId = platform::Trim(RecordWriter::WithoutReserved(reader.Text(), kReserved));
    serialNumber = reader.Text();
    trayPositions = reader.Int();
    responseTimeout = reader.Int();
  } else {
    reader.Skip(kIdentityFields);
  }
  const bool calibration = (flags & kLoadCalibration) != 0;
  if (calibration) {
    statusPeriod = reader.Int();
    probeId = reader.Text();
    a0 = reader.Double();
    a1 = reader.Double();
    a2 = reader.Double();
    for (size_t slot = 0; slot < kFrontSlots; ++slot) ReadSlot(reader, *this, slot);
  } else {
    reader.Skip(1 + kCalibrationFields);
  }
  if ((flags & kLoadRunParameters) != 0) {
    injectionTemperature = reader.Double();
    testRecord.FromText(std::string(reader.Text()));
    if (fields.size() >= kFieldsWithOffset) temperatureOffset = reader.Double();
  } else {
    reader.Skip(kParameterFields + 1);
  }
  if (!calibration || fields.size() < kFieldsWithNinthSlot) return true;
  ReadSlot(reader, *this, kFrontSlots);
  if (fields.size() < kFieldCount) return true;
  checkStandardFlag = reader.Int() != 0 ? 1 : 0;
  checkStandardInterval = reader.Int();
  samplesSinceCheck = reader.Int();
  return true;
}

std::string ConfigurationRecord::GetInstrumentId() const {
  const ConfigurationGuard guard(*this);
  return platform::Trim(instrumentId);
}

void ConfigurationRecord::SetInstrumentId(const std::string& text) {
  const ConfigurationGuard guard(*this);
  // What becomes a blank in the stored text becomes one here, or being stored would change the id.
  instrumentId = platform::Trim(RecordWriter::WithoutReserved(text, kReserved));
}

std::string ConfigurationRecord::GetConfigurationId() const {
  const ConfigurationGuard guard(*this);
  return platform::Trim(configurationId);
}

int ConfigurationRecord::GetSlotCount() const {
  const ConfigurationGuard guard(*this);
  return (optionByte & kOptionLowTemperature) != 0 ? kCalibrationSlots : kCalibrationSlots - 1;
}

int ConfigurationRecord::SelectCalibrationSlot(double temperature) const {
  const int last = GetSlotCount() - 1;
  for (int slot = 0; slot < last; ++slot) {
    const auto i = static_cast<size_t>(slot);
    if (temperature > (kCalibrationTemperatures[i] + kCalibrationTemperatures[i + 1]) / 2) {
      return slot;
    }
  }
  return last;
}

void ConfigurationRecord::GetCellConstants(double temperature, double& b0Out, double& b1Out,
                                           double& b2Out) const {
  const ConfigurationGuard guard(*this);
  const auto slot = static_cast<size_t>(SelectCalibrationSlot(temperature));
  b0Out = b0[slot];
  b1Out = b1[slot];
  b2Out = b2[slot];
}

bool ConfigurationRecord::HasCellConstants(double temperature) const {
  const ConfigurationGuard guard(*this);
  const auto isFilled = [this](int slot) {
    const auto i = static_cast<size_t>(slot);
    return b0[i] != 0.0 || b1[i] != 0.0 || b2[i] != 0.0;
  };
  if (temperature != kAnyTemperature) return isFilled(SelectCalibrationSlot(temperature));
  for (int slot = 0; slot < GetSlotCount(); ++slot) {
    if (isFilled(slot)) return true;
  }
  return false;
}

}  // namespace rvx
