#include "host/core/sample_columns.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>
#include <optional>

#include "platform/text.h"

namespace torvell {
namespace {

constexpr char kInvalidDate[] = "!";

std::vector<SampleColumn> MakeColumns() {
  using enum ColumnType;
  std::vector<SampleColumn> columns = {{"ID", Guid},
                                       {"Sample ID", Text},
                                       {"Timestamp", Date},
                                       {"Operator", Text},
                                       {"Type", Text},
                                       {"Instrument", Text},
                                       {"Probe ID", Text},
                                       {"Tray", Integer},
                                       {"Position", Integer},
                                       {"Kind", Integer},
                                       {"Known Viscosity", Real},
                                       {"Speed", Real},
                                       {"Average Temperature", Real},
                                       {"Reserved 1", Real},
                                       {"Reserved 2", Real},
                                       {"Viscosity", Real},
                                       {"Valid", Integer}};
  for (int i = 1; i <= rvx::kSampleConstants; ++i) {
    columns.push_back({fmt::format("Constant {}", i), Real});
  }
  columns.push_back({"Second Date", Date});
  columns.push_back({"ID Copy", Guid});
  columns.push_back({"Serial Number", Text});
  columns.push_back({"Last Text", Text});
  return columns;
}

std::string DateText(const platform::Date& date) {
  const int millisecond = date.fields().millisecond;
  std::string text = platform::FormatIsoDate(date);
  return millisecond == 0 ? text : text + fmt::format(".{:03}", millisecond);
}

ColumnValue DateValue(const platform::Date& date) {
  if (!date.IsValid()) return std::monostate();
  return DateText(date);
}

ColumnValue StoredDate(const platform::Date& date) {
  if (date.state() == platform::Date::State::Null) return std::string();
  if (!date.IsValid()) return std::string(kInvalidDate);
  return DateText(date);
}

std::optional<platform::Date> ReadDate(const std::string& text) {
  if (text.empty()) return platform::Date();
  if (text == kInvalidDate) return platform::Date::Invalid();
  constexpr size_t kSeconds = 19;  // "2026-01-31T16:05:06"
  platform::Date date = platform::ParseDate(text.substr(0, kSeconds));
  if (text.size() > kSeconds) {
    date = date.PlusMilliseconds(platform::ParseInt(text.substr(kSeconds + 1)).value_or(0));
  }
  // Many forms can be read as a date, and only one is written here.
  if (!date.IsValid() || DateText(date) != text) return std::nullopt;
  return date;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

std::optional<platform::Guid> ReadGuid(const std::string& text) {
  platform::Guid guid{};
  size_t digits = 0;
  for (char c : text) {
    if (c == '-') continue;
    const int digit = HexDigit(c);
    if (digit < 0 || digits >= 2 * guid.size()) return std::nullopt;
    guid[digits / 2] = static_cast<uint8_t>(guid[digits / 2] * 16 + digit);
    ++digits;
  }
  if (digits != 2 * guid.size()) return std::nullopt;
  return guid;
}

std::vector<ColumnValue> MakeValues(const rvx::Sample& s, ColumnValue timestamp,
                                    ColumnValue secondDate) {
  auto whole = [](auto value) { return ColumnValue(static_cast<int64_t>(value)); };
  std::vector<ColumnValue> values = {platform::FormatGuid(s.id),
                                     s.sampleId,
                                     std::move(timestamp),
                                     s.operatorName,
                                     s.typeName,
                                     s.instrument,
                                     s.probeId,
                                     whole(s.tray),
                                     whole(s.position),
                                     whole(s.kind),
                                     s.knownViscosity,
                                     s.speed,
                                     s.averageTemperature,
                                     s.reserved1,
                                     s.reserved2,
                                     s.viscosity,
                                     whole(s.valid)};
  for (double constant : s.constants) values.emplace_back(constant);
  values.push_back(std::move(secondDate));
  values.emplace_back(platform::FormatGuid(s.idCopy));
  values.emplace_back(s.serialNumber);
  values.emplace_back(s.lastText);
  return values;
}

// Takes the values one after the other; a wrong one is noted.
class Reader {
 public:
  explicit Reader(const std::vector<ColumnValue>& values) : values_(values) {}
  bool good() const { return good_ && at_ == values_.size(); }

  void Read(std::string& out) { out = Take<std::string>(); }
  void Read(double& out) {
    // A number that is none is kept as Null by the database.
    if (at_ < values_.size() && std::holds_alternative<std::monostate>(values_[at_])) {
      ++at_;
      out = std::numeric_limits<double>::quiet_NaN();
      return;
    }
    out = Take<double>();
  }
  template <class Whole>
  void ReadWhole(Whole& out) {
    const auto value = Take<int64_t>();
    out = static_cast<Whole>(value);
    if (static_cast<int64_t>(out) != value) good_ = false;
  }
  void Read(platform::Date& out) { Convert(ReadDate(Take<std::string>()), out); }
  void Read(platform::Guid& out) { Convert(ReadGuid(Take<std::string>()), out); }

 private:
  template <class Type>
  Type Take() {
    if (at_ < values_.size()) {
      if (const Type* value = std::get_if<Type>(&values_[at_++])) return *value;
    }
    good_ = false;
    return Type();
  }
  template <class Type>
  void Convert(const std::optional<Type>& value, Type& out) {
    if (value) out = *value;
    if (!value) good_ = false;
  }

  const std::vector<ColumnValue>& values_;
  size_t at_ = 0;
  bool good_ = true;
};

}  // namespace

const std::vector<SampleColumn>& SampleColumns() {
  static const std::vector<SampleColumn> columns = MakeColumns();
  return columns;
}

std::vector<ColumnValue> SampleValues(const rvx::Sample& sample) {
  auto values = MakeValues(sample, DateValue(sample.timestamp), DateValue(sample.secondDate));
  for (ColumnValue& value : values) {
    const double* number = std::get_if<double>(&value);
    if (number != nullptr && std::isnan(*number)) value = std::monostate();
  }
  return values;
}

std::vector<ColumnValue> StoredSampleValues(const rvx::Sample& sample) {
  return MakeValues(sample, StoredDate(sample.timestamp), StoredDate(sample.secondDate));
}

bool SampleFromStored(const std::vector<ColumnValue>& values, rvx::Sample& s) {
  Reader reader(values);
  reader.Read(s.id);
  reader.Read(s.sampleId);
  reader.Read(s.timestamp);
  reader.Read(s.operatorName);
  reader.Read(s.typeName);
  reader.Read(s.instrument);
  reader.Read(s.probeId);
  reader.ReadWhole(s.tray);
  reader.ReadWhole(s.position);
  reader.ReadWhole(s.kind);
  reader.Read(s.knownViscosity);
  reader.Read(s.speed);
  reader.Read(s.averageTemperature);
  reader.Read(s.reserved1);
  reader.Read(s.reserved2);
  reader.Read(s.viscosity);
  reader.ReadWhole(s.valid);
  for (double& constant : s.constants) reader.Read(constant);
  reader.Read(s.secondDate);
  reader.Read(s.idCopy);
  reader.Read(s.serialNumber);
  reader.Read(s.lastText);
  return reader.good();
}

}  // namespace torvell
