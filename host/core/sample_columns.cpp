#include "host/core/sample_columns.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>

#include "platform/text.h"

namespace torvell {
namespace {

constexpr char kInvalidDate[] = "!";

// Where a column's value is: a member, or one of the constants by its index.
using Member = std::variant<std::string rvx::Sample::*, platform::Date rvx::Sample::*,
                            platform::Guid rvx::Sample::*, double rvx::Sample::*,
                            uint16_t rvx::Sample::*, int32_t rvx::Sample::*, size_t>;

struct Field {
  std::string name;
  Member member;
};

// Every column, in order.
const std::vector<Field>& Fields() {
  static const std::vector<Field> fields = [] {
    using S = rvx::Sample;
    std::vector<Field> all = {{"ID", &S::id},
                              {"Sample ID", &S::sampleId},
                              {"Timestamp", &S::timestamp},
                              {"Operator", &S::operatorName},
                              {"Type", &S::typeName},
                              {"Instrument", &S::instrument},
                              {"Probe ID", &S::probeId},
                              {"Tray", &S::tray},
                              {"Position", &S::position},
                              {"Kind", &S::kind},
                              {"Known Viscosity", &S::knownViscosity},
                              {"Speed", &S::speed},
                              {"Average Temperature", &S::averageTemperature},
                              {"Reserved 1", &S::reserved1},
                              {"Reserved 2", &S::reserved2},
                              {"Viscosity", &S::viscosity},
                              {"Valid", &S::valid}};
    for (size_t i = 0; i < size_t{rvx::kSampleConstants}; ++i) {
      all.push_back({fmt::format("Constant {}", i + 1), i});
    }
    all.push_back({"Second Date", &S::secondDate});
    all.push_back({"ID Copy", &S::idCopy});
    all.push_back({"Serial Number", &S::serialNumber});
    all.push_back({"Last Text", &S::lastText});
    return all;
  }();
  return fields;
}

// Calls `take` with the place of a value in a sample.
template <class Sample, class Take>
auto WithMember(const Member& member, Sample& sample, const Take& take) {
  return std::visit(
      [&](auto where) {
        if constexpr (std::is_same_v<decltype(where), size_t>) {
          return take(sample.constants[where]);
        } else {
          return take(sample.*where);
        }
      },
      member);
}

struct TypeOf {
  ColumnType operator()(std::string rvx::Sample::*) const { return ColumnType::Text; }
  ColumnType operator()(platform::Date rvx::Sample::*) const { return ColumnType::Date; }
  ColumnType operator()(platform::Guid rvx::Sample::*) const { return ColumnType::Guid; }
  ColumnType operator()(double rvx::Sample::*) const { return ColumnType::Real; }
  ColumnType operator()(uint16_t rvx::Sample::*) const { return ColumnType::Integer; }
  ColumnType operator()(int32_t rvx::Sample::*) const { return ColumnType::Integer; }
  ColumnType operator()(size_t /*constant*/) const { return ColumnType::Real; }
};

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
  // ParseDate accepts several forms, and only one of them is ever written here.
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

// Turns a member of a sample into its column's value; `dateValue` decides the form of dates.
struct ValueOf {
  ColumnValue (*dateValue)(const platform::Date&);

  ColumnValue operator()(const std::string& text) const { return text; }
  ColumnValue operator()(const platform::Date& date) const { return dateValue(date); }
  ColumnValue operator()(const platform::Guid& guid) const { return platform::FormatGuid(guid); }
  ColumnValue operator()(double number) const { return number; }
  ColumnValue operator()(uint16_t number) const { return int64_t{number}; }
  ColumnValue operator()(int32_t number) const { return int64_t{number}; }
};

std::vector<ColumnValue> MakeValues(const rvx::Sample& sample, const ValueOf& valueOf) {
  std::vector<ColumnValue> values;
  values.reserve(Fields().size());
  for (const Field& field : Fields()) values.push_back(WithMember(field.member, sample, valueOf));
  return values;
}

// Reads the values in order; good() is false after a wrong one.
class Reader {
 public:
  explicit Reader(const std::vector<ColumnValue>& values) : values_(values) {}
  bool good() const { return good_ && at_ == values_.size(); }

  void Read(std::string& out) { out = Take<std::string>(); }
  void Read(double& out) {
    // The database keeps NaN as Null.
    if (at_ < values_.size() && std::holds_alternative<std::monostate>(values_[at_])) {
      ++at_;
      out = std::numeric_limits<double>::quiet_NaN();
      return;
    }
    out = Take<double>();
  }
  void Read(uint16_t& out) { ReadWhole(out); }
  void Read(int32_t& out) { ReadWhole(out); }
  void Read(platform::Date& out) { Convert(ReadDate(Take<std::string>()), out); }
  void Read(platform::Guid& out) { Convert(ReadGuid(Take<std::string>()), out); }

 private:
  template <class Whole>
  void ReadWhole(Whole& out) {
    const auto value = Take<int64_t>();
    out = static_cast<Whole>(value);
    if (static_cast<int64_t>(out) != value) good_ = false;
  }
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
  static const std::vector<SampleColumn> columns = [] {
    std::vector<SampleColumn> all;
    for (const Field& field : Fields()) {
      all.push_back({field.name, std::visit(TypeOf(), field.member)});
    }
    return all;
  }();
  return columns;
}

std::vector<ColumnValue> SampleValues(const rvx::Sample& sample) {
  auto values = MakeValues(sample, {DateValue});
  for (ColumnValue& value : values) {
    const double* number = std::get_if<double>(&value);
    if (number != nullptr && std::isnan(*number)) value = std::monostate();
  }
  return values;
}

std::vector<ColumnValue> StoredSampleValues(const rvx::Sample& sample) {
  return MakeValues(sample, {StoredDate});
}

bool SampleFromStored(const std::vector<ColumnValue>& values, rvx::Sample& sample) {
  Reader reader(values);
  for (const Field& field : Fields()) {
    WithMember(field.member, sample, [&reader](auto& value) { reader.Read(value); });
  }
  return reader.good();
}

}  // namespace torvell
