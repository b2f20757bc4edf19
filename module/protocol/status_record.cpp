#include "module/protocol/status_record.h"

#include <algorithm>

#include "module/resources/string_table.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr size_t kLastTagOffset = 17;
// The simulator's pairs: the six words at the front and the last tag.
constexpr size_t kSwappedFrontEnd = 12;

constexpr int kReadyTextId = 699;
constexpr int kNotDefinedTextId = 704;
constexpr int kFirstOperationTextId = 960;
constexpr int kUnknownOperationTextId = 974;

// By bit of the machine status; bit 7 has no text.
constexpr std::array<int, 7> kMachineStatusTextIds = {
    707, 700, 701, kNotDefinedTextId, kNotDefinedTextId, 703, kNotDefinedTextId};

struct ErrorRow {
  ErrorCode code;
  int id;
};
constexpr auto kErrorTexts = std::to_array<ErrorRow>({
    {ErrorCode::None, 0},
    {ErrorCode::NotIdle, 362},
    {ErrorCode::InvalidTrayPosition, 363},
    {ErrorCode::NotHomed, 364},
    {ErrorCode::Reserved43, 0},
    {ErrorCode::Reserved44, 0},
    {ErrorCode::InvalidCommand, 346},
    {ErrorCode::InvalidManualCommand, 347},
    {ErrorCode::ManualWhileTesting, 348},
    {ErrorCode::CoolingUnderControl, 349},
    {ErrorCode::StepperActive, 350},
    {ErrorCode::ConfigurationNotStored, 351},
    {ErrorCode::InvalidStepperCommand, 352},
    {ErrorCode::InvalidPacket, 353},
    {ErrorCode::ConfigurationNotLoaded, 360},
    {ErrorCode::SelfTestFailed, 361},
});

// By bit of the self-test word.
constexpr auto kSelfTestTexts = std::to_array<const char*>(
    {"+ VSS Low", "+ VSS High", "- VSS Low", "- VSS High", "VCC Low", "VCC High",
     "AD Consistency Failed", "AD Calibration Failed", "RAM Test Failed"});

}  // namespace

std::optional<StatusRecord> StatusRecord::FromData(std::span<const uint8_t> data) {
  if (data.size() < kStatusRecordSize) return std::nullopt;
  StatusRecord record;
  std::copy_n(data.begin(), kStatusRecordSize, record.bytes_.begin());
  return record;
}

std::optional<StatusRecord> StatusRecord::FromSimulatorData(std::span<const uint8_t> data) {
  std::optional<StatusRecord> record = FromData(data);
  if (!record) return record;
  auto& bytes = record->bytes_;
  for (size_t i = 0; i < kSwappedFrontEnd; i += 2) std::swap(bytes[i], bytes[i + 1]);
  std::swap(bytes[kLastTagOffset], bytes[kLastTagOffset + 1]);
  return record;
}

std::string StatusRecord::lastTag() const {
  const std::array<char, 2> tag = lastTagBytes();
  if (tag[0] == 0 && tag[1] == 0) return {};
  return {tag[0], tag[1]};
}

std::array<char, 2> StatusRecord::lastTagBytes() const {
  return {static_cast<char>(bytes_[kLastTagOffset]), static_cast<char>(bytes_[kLastTagOffset + 1])};
}

void StatusRecord::SetLastTag(std::string_view tag) {
  for (size_t i = 0; i < 2; ++i) {
    bytes_[kLastTagOffset + i] = i < tag.size() ? static_cast<uint8_t>(tag[i]) : uint8_t{0};
  }
}

int OperationTextId(uint8_t operation) {
  return operation < kOperationCount ? kFirstOperationTextId + operation : kUnknownOperationTextId;
}

int ErrorTextId(uint8_t code) {
  const auto found = std::find_if(kErrorTexts.begin(), kErrorTexts.end(), [&](const ErrorRow& e) {
    return static_cast<uint8_t>(e.code) == code;
  });
  return found == kErrorTexts.end() ? kUnknownErrorTextId : found->id;
}

std::vector<int> MachineStatusTextIds(uint8_t machineStatus) {
  if (machineStatus == 0) return {kReadyTextId};
  std::vector<int> ids;
  for (size_t bit = 0; bit < kMachineStatusTextIds.size(); ++bit) {
    if ((machineStatus >> bit & 1) != 0) ids.push_back(kMachineStatusTextIds[bit]);
  }
  return ids;
}

StatusTexts StatusTexts::Load() {
  std::vector<int> ids{kReadyTextId, kUnknownOperationTextId, kUnknownErrorTextId};
  ids.insert(ids.end(), kMachineStatusTextIds.begin(), kMachineStatusTextIds.end());
  for (const ErrorRow& error : kErrorTexts) ids.push_back(error.id);
  for (int i = 0; i < kOperationCount; ++i) ids.push_back(kFirstOperationTextId + i);
  std::sort(ids.begin(), ids.end());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  StatusTexts texts;
  for (const int id : ids) {
    if (id != 0) texts.texts_.emplace_back(id, LoadResourceString(id));
  }
  return texts;
}

std::string StatusTexts::Find(int id) const {
  const auto found =
      std::lower_bound(texts_.begin(), texts_.end(), id,
                       [](const std::pair<int, std::string>& e, int key) { return e.first < key; });
  return found != texts_.end() && found->first == id ? found->second : std::string();
}

std::string StatusTexts::OperationText(uint8_t operation) const {
  return Find(OperationTextId(operation));
}

std::string StatusTexts::ErrorText(uint8_t code) const {
  const int id = ErrorTextId(code);
  std::string text = Find(id);
  if (id != kUnknownErrorTextId) return text;
  // The text comes from the string table, so its place for the code is filled by hand.
  static constexpr std::string_view kPlace = "%x";
  const size_t place = text.find(kPlace);
  if (place != std::string::npos) {
    text.replace(place, kPlace.size(), platform::FormatText("%x", static_cast<unsigned>(code)));
  }
  return text;
}

std::string StatusTexts::MachineStatusText(uint8_t machineStatus) const {
  std::string text;
  for (const int id : MachineStatusTextIds(machineStatus)) text += Find(id);
  return text;
}

std::optional<uint16_t> ParseSelfTestWord(std::span<const uint8_t> data) {
  if (data.size() < 2) return std::nullopt;
  return static_cast<uint16_t>(data[0] << 8 | data[1]);
}

std::vector<std::string> SelfTestFailures(uint16_t word) {
  std::vector<std::string> failures;
  for (size_t bit = 0; bit < kSelfTestTexts.size(); ++bit) {
    if ((word >> bit & 1) != 0) failures.emplace_back(kSelfTestTexts[bit]);
  }
  return failures;
}

}  // namespace rvx
