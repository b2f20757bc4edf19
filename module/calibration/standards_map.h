// The calibration standards of one instrument: oils of known viscosity, by name.
//
// Nothing here has a lock: a map belongs to the user-interface thread, or to another single thread.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace rvx {

// In place of an index: the last record.
inline constexpr int32_t kLastRecord = -1;

// The records of one standard, one for each temperature at which the oil is certified. A record is
// a text of three fields, each followed by 0x0B: temperature text, known viscosity (decimal text,
// mPa*s; "0" or empty: not usable), lot. A field without its 0x0B is empty.
class CStandardInfoArray {
 public:
  int32_t GetSize() const { return static_cast<int32_t>(records_.size()); }
  void Add(std::string record) { records_.push_back(std::move(record)); }
  // `index` from 0 to GetSize() - 1.
  void RemoveAt(int32_t index) { records_.erase(records_.begin() + index); }

  // Each throws InvalidException for an index beyond the records; the fields take kLastRecord too.
  const std::string& GetRecord(int32_t index) const;
  std::string GetTemperature(int32_t index) const { return GetField(index, 0); }
  std::string GetViscosityText(int32_t index) const { return GetField(index, 1); }
  std::string GetLot(int32_t index) const { return GetField(index, 2); }

  // The index of the record of a temperature, compared as exact text, or -1.
  int32_t FindTemperature(std::string_view temperature) const;
  // Whether the record's known viscosity is neither "0" nor empty.
  bool IsUsable(int32_t index) const;

 private:
  std::string GetField(int32_t index, size_t field) const;
  std::vector<std::string> records_;
};

// Name (compared exactly) to records. Operations on an unknown name, or on a record after the last
// one, throw InvalidException by pointer, and the catcher deletes it. That is an ordinary way to
// find the end of a list.
class CStandardsMap {
 public:
  explicit CStandardsMap(bool lowTemperatureOption) : lowTemperature_(lowTemperatureOption) {}

  // Appends a record and makes the standard if it is new. A second record of one temperature is
  // dropped and the first stays. Returns the number of records of the name.
  int32_t AddStandardRecord(const std::string& name, const std::string& record);
  // The whole record.
  std::string GetStandardRecord(const std::string& name, int32_t index) const;
  // `index` may be kLastRecord.
  std::string GetStandardLot(const std::string& name, int32_t index) const;
  std::string GetStandardTemperature(const std::string& name, int32_t index) const;
  std::string GetStandardViscosityText(const std::string& name, int32_t index) const;
  double GetStandardViscosity(const std::string& name, int32_t index) const;  // mPa*s
  // The index of the record of a temperature text, or -1.
  int32_t FindStandardTemperature(const std::string& name, const std::string& temperature) const;
  // The same, for a usable record only.
  int32_t FindUsableTemperature(const std::string& name, const std::string& temperature) const;
  // Whether the standard has a usable record at one of the temperatures of this instrument; false
  // for an unknown name.
  bool HasUsableRecord(const std::string& name) const;
  // Returns the number of records left, or -1 if there was none of that temperature. A standard
  // without records is removed.
  int32_t RemoveStandardRecord(const std::string& name, const std::string& temperature);
  // In ascending order, upper and lower case alike.
  std::vector<std::string> GetStandardNames() const;
  void Clear() { standards_.clear(); }

  // Adds the rows of a stored text (boundary/standards_text.h). A row that is cut short ends
  // the load; what came before it stays.
  void LoadFromText(std::string_view text);
  // The stored text: the rows of all standards, in the order of GetStandardNames.
  std::string ToText() const;

 private:
  const CStandardInfoArray& Find(const std::string& name) const;

  bool lowTemperature_;
  std::map<std::string, CStandardInfoArray> standards_;
};

// The order of lists of standards: ascending, upper and lower case alike; equal ones keep their
// order.
void SortNoCase(std::vector<std::string>& texts);

// One record from its fields.
std::string MakeStandardRecord(std::string_view temperature, std::string_view viscosity,
                               std::string_view lot);
// One row of the stored text. Characters that end a cell or a row become blanks.
std::string MakeStandardRow(std::string_view name, std::string_view temperature,
                            std::string_view viscosity, std::string_view lot);

}  // namespace rvx
