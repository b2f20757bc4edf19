#include "module/instrument/configuration_record.h"

#include <string_view>
#include <vector>

#include "module/instrument/record_text.h"
#include "module/protocol/identification.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr char kSeparator = '\x0B';
// Characters that a text field can't contain: the field's end and the end of a settings line.
constexpr std::string_view kReserved = "\x0B\n";

constexpr size_t kFieldCount = 52;
constexpr size_t kMinFieldCount = 44;
constexpr size_t kFieldsWithOffset = 45;
constexpr size_t kFieldsWithNinthSlot = 49;

constexpr int kFrontSlots = 8;  // the ninth slot's fields come after the offset
constexpr size_t kIdentityFields = 4;
constexpr size_t kCalibrationFields = 4 + kFrontSlots * 4;
constexpr size_t kParameterFields = 2;

double DefaultInjectionTemperature(char modelCode) {
  return static_cast<unsigned char>(modelCode) < '3' ? -5.0 : 15.0;
}

void WriteSlot(RecordWriter& writer, const ConfigurationFields& record, size_t slot) {
  writer.Double(record.b0[slot]).Double(record.b1[slot]).Double(record.b2[slot]);
  writer.Date(record.calibrationDates[slot]);
}

void ReadSlot(RecordReader& reader, ConfigurationFields& record, size_t slot) {
  record.b0[slot] = reader.Double();
  record.b1[slot] = reader.Double();
  record.b2[slot] = reader.Double();
  record.calibrationDates[slot] = reader.Date();
}

}  // namespace

ConfigurationFields::ConfigurationFields() : instrumentId("RVX"), configurationId("Unsaved") {
  // The date of a slot that was never calibrated.
  calibrationDates.fill(platform::Date(1938, 1, 1));
}

void ConfigurationFields::SetDefaults(const TestRecord& testDefaults) {
  instrumentId = "RVX";
  trayPositions = 30;
  responseTimeout = 6000;
  statusPeriod = 495;
  injectionTemperature = DefaultInjectionTemperature(modelCode);
  checkStandardFlag = 0;
  checkStandardInterval = 25;
  samplesSinceCheck = kNeverChecked;
  const int32_t sentInjectionTime = testRecord.sentInjectionTime;
  testRecord = testDefaults;
  testRecord.sentInjectionTime = sentInjectionTime;
}

std::string ConfigurationFields::ToText() const {
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

bool ConfigurationFields::FromText(const std::string& text, int32_t flags) {
  const std::vector<std::string> fields = platform::SplitFields(text, kSeparator, kFieldCount);
  if (fields.size() < kMinFieldCount) return false;
  RecordReader reader(fields);
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

std::string ConfigurationFields::GetInstrumentId() const { return platform::Trim(instrumentId); }

void ConfigurationFields::SetInstrumentId(const std::string& text) {
  // A character that becomes a blank in the stored text becomes one here too, so that storing does
  // not change the id.
  instrumentId = platform::Trim(RecordWriter::WithoutReserved(text, kReserved));
}

std::string ConfigurationFields::GetConfigurationId() const {
  return platform::Trim(configurationId);
}

int ConfigurationFields::GetSlotCount() const {
  return (optionByte & kOptionLowTemperature) != 0 ? kCalibrationSlots : kCalibrationSlots - 1;
}

int ConfigurationFields::SelectCalibrationSlot(double temperature) const {
  const int last = GetSlotCount() - 1;
  for (int slot = 0; slot < last; ++slot) {
    const auto i = static_cast<size_t>(slot);
    if (temperature > (kCalibrationTemperatures[i] + kCalibrationTemperatures[i + 1]) / 2) {
      return slot;
    }
  }
  return last;
}

void ConfigurationFields::GetCellConstants(double temperature, double& b0Out, double& b1Out,
                                           double& b2Out) const {
  const auto slot = static_cast<size_t>(SelectCalibrationSlot(temperature));
  b0Out = b0[slot];
  b1Out = b1[slot];
  b2Out = b2[slot];
}

bool ConfigurationFields::HasCellConstants(double temperature) const {
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

ConfigurationFields ConfigurationRecord::Copy() const {
  const ConfigurationGuard guard(*this);
  return fields;
}

void ConfigurationRecord::Assign(const ConfigurationRecord& other) {
  if (this == &other) return;
  const ConfigurationFields copy = other.Copy();
  const ConfigurationGuard guard(*this);
  fields = copy;
}

void ConfigurationRecord::SetDefaults() {
  // Made before the lock is taken: its constructor calls the host for a default.
  const TestRecord testDefaults;
  const ConfigurationGuard guard(*this);
  fields.SetDefaults(testDefaults);
}

std::string ConfigurationRecord::ToText() const {
  const ConfigurationGuard guard(*this);
  return fields.ToText();
}

bool ConfigurationRecord::FromText(const std::string& text, int32_t flags) {
  const ConfigurationGuard guard(*this);
  return fields.FromText(text, flags);
}

std::string ConfigurationRecord::GetInstrumentId() const {
  const ConfigurationGuard guard(*this);
  return fields.GetInstrumentId();
}

void ConfigurationRecord::SetInstrumentId(const std::string& text) {
  const ConfigurationGuard guard(*this);
  fields.SetInstrumentId(text);
}

std::string ConfigurationRecord::GetConfigurationId() const {
  const ConfigurationGuard guard(*this);
  return fields.GetConfigurationId();
}

int ConfigurationRecord::GetSlotCount() const {
  const ConfigurationGuard guard(*this);
  return fields.GetSlotCount();
}

int ConfigurationRecord::SelectCalibrationSlot(double temperature) const {
  const ConfigurationGuard guard(*this);
  return fields.SelectCalibrationSlot(temperature);
}

void ConfigurationRecord::GetCellConstants(double temperature, double& b0, double& b1,
                                           double& b2) const {
  const ConfigurationGuard guard(*this);
  fields.GetCellConstants(temperature, b0, b1, b2);
}

bool ConfigurationRecord::HasCellConstants(double temperature) const {
  const ConfigurationGuard guard(*this);
  return fields.HasCellConstants(temperature);
}

}  // namespace rvx
