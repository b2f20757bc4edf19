#include "module/calibration/standards_map.h"

#include <algorithm>

#include "boundary/exceptions.h"
#include "boundary/standards_text.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr int32_t kBasicTemperatures = 8;
constexpr int32_t kAllTemperatures = 9;

// A cell of the stored text.
std::string Cell(std::string_view text) {
  std::string cell(text);
  std::replace(cell.begin(), cell.end(), kStandardsCellEnd, ' ');
  std::replace(cell.begin(), cell.end(), kStandardsRowEnd, ' ');
  return cell + kStandardsCellEnd;
}

}  // namespace

const std::string& CStandardInfoArray::GetRecord(int32_t index) const {
  if (index < 0 || index >= GetSize()) throw new InvalidException;
  return records_[static_cast<size_t>(index)];
}

std::string CStandardInfoArray::GetField(int32_t index, size_t field) const {
  std::string_view rest = GetRecord(index == kLastRecord ? GetSize() - 1 : index);
  for (;; --field) {
    const size_t end = rest.find(kStandardsCellEnd);
    if (end == std::string_view::npos) return {};
    if (field == 0) return std::string(rest.substr(0, end));
    rest.remove_prefix(end + 1);
  }
}

int32_t CStandardInfoArray::FindTemperature(std::string_view temperature) const {
  for (int32_t i = 0; i < GetSize(); ++i) {
    if (GetTemperature(i) == temperature) return i;
  }
  return -1;
}

bool CStandardInfoArray::IsUsable(int32_t index) const {
  const std::string viscosity = GetViscosityText(index);
  return !viscosity.empty() && viscosity != "0";
}

const CStandardInfoArray& CStandardsMap::Find(const std::string& name) const {
  const auto found = standards_.find(name);
  if (found == standards_.end()) throw new InvalidException;
  return found->second;
}

int32_t CStandardsMap::AddStandardRecord(const std::string& name, const std::string& record) {
  CStandardInfoArray& records = standards_[name];
  CStandardInfoArray added;
  added.Add(record);
  if (records.FindTemperature(added.GetTemperature(0)) < 0) records.Add(record);
  return records.GetSize();
}

std::string CStandardsMap::GetStandardRecord(const std::string& name, int32_t index) const {
  return Find(name).GetRecord(index);
}

std::string CStandardsMap::GetStandardLot(const std::string& name, int32_t index) const {
  return Find(name).GetLot(index);
}

std::string CStandardsMap::GetStandardTemperature(const std::string& name, int32_t index) const {
  return Find(name).GetTemperature(index);
}

std::string CStandardsMap::GetStandardViscosityText(const std::string& name, int32_t index) const {
  return Find(name).GetViscosityText(index);
}

double CStandardsMap::GetStandardViscosity(const std::string& name, int32_t index) const {
  return platform::ParseLeadingDouble(GetStandardViscosityText(name, index));
}

int32_t CStandardsMap::FindStandardTemperature(const std::string& name,
                                               const std::string& temperature) const {
  return Find(name).FindTemperature(temperature);
}

int32_t CStandardsMap::FindUsableTemperature(const std::string& name,
                                             const std::string& temperature) const {
  const CStandardInfoArray& records = Find(name);
  const int32_t index = records.FindTemperature(temperature);
  return index >= 0 && records.IsUsable(index) ? index : -1;
}

bool CStandardsMap::HasUsableRecord(const std::string& name) const {
  if (standards_.find(name) == standards_.end()) return false;
  const int32_t count = lowTemperature_ ? kAllTemperatures : kBasicTemperatures;
  return std::any_of(kTemperatureTexts, kTemperatureTexts + count, [&](const char* temperature) {
    return FindUsableTemperature(name, temperature) >= 0;
  });
}

int32_t CStandardsMap::RemoveStandardRecord(const std::string& name,
                                            const std::string& temperature) {
  const auto found = standards_.find(name);
  if (found == standards_.end()) throw new InvalidException;
  CStandardInfoArray& records = found->second;
  const int32_t index = records.FindTemperature(temperature);
  if (index < 0) return -1;
  records.RemoveAt(index);
  const int32_t left = records.GetSize();
  if (left == 0) standards_.erase(found);
  return left;
}

std::vector<std::string> CStandardsMap::GetStandardNames() const {
  std::vector<std::string> names;
  names.reserve(standards_.size());
  for (const auto& [name, records] : standards_) names.push_back(name);
  SortNoCase(names);
  return names;
}

void CStandardsMap::LoadFromText(std::string_view text) {
  for (;;) {
    const size_t nameEnd = text.find(kStandardsCellEnd);
    if (nameEnd == std::string_view::npos) return;
    const std::string name(text.substr(0, nameEnd));
    text.remove_prefix(nameEnd + 1);
    const size_t rowEnd = text.find(kStandardsRowEnd);
    if (rowEnd == std::string_view::npos) return;
    AddStandardRecord(name, std::string(text.substr(0, rowEnd)));
    text.remove_prefix(rowEnd + 1);
  }
}

std::string CStandardsMap::ToText() const {
  std::string text;
  for (const std::string& name : GetStandardNames()) {
    const CStandardInfoArray& records = Find(name);
    for (int32_t i = 0; i < records.GetSize(); ++i) {
      text += MakeStandardRow(name, records.GetTemperature(i), records.GetViscosityText(i),
                              records.GetLot(i));
    }
  }
  return text;
}

void SortNoCase(std::vector<std::string>& texts) {
  std::stable_sort(texts.begin(), texts.end(), [](const std::string& a, const std::string& b) {
    return platform::CompareNoCase(a, b) < 0;
  });
}

std::string MakeStandardRecord(std::string_view temperature, std::string_view viscosity,
                               std::string_view lot) {
  return Cell(temperature) + Cell(viscosity) + Cell(lot);
}

std::string MakeStandardRow(std::string_view name, std::string_view temperature,
                            std::string_view viscosity, std::string_view lot) {
  return Cell(name) + MakeStandardRecord(temperature, viscosity, lot) + kStandardsRowEnd;
}

}  // namespace rvx
