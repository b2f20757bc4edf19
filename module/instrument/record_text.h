// The fields of a record's stored text: each with its separator after it, numbers with a point.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/date.h"
#include "platform/text.h"

namespace rvx {

// Appends fields one by one.
class RecordWriter {
 public:
  explicit RecordWriter(char separator) : separator_(separator) {}

  RecordWriter& Int(int32_t value) { return Raw(platform::FormatText("%d", value)); }
  RecordWriter& Double(double value) { return Raw(platform::FormatText("%.15f", value)); }
  RecordWriter& Date(const platform::Date& date) { return Raw(platform::FormatEnglishDate(date)); }
  // A text as it is, except that the characters of `reserved` and zero bytes are written as blanks:
  // they separate fields or lines of the texts that this text becomes a part of.
  RecordWriter& Text(std::string_view value, std::string_view reserved) {
    return Raw(WithoutReserved(value, reserved));
  }
  // The text that Text writes.
  static std::string WithoutReserved(std::string_view value, std::string_view reserved) {
    std::string safe(value);
    for (char& c : safe) {
      if (c == '\0' || reserved.find(c) != std::string_view::npos) c = ' ';
    }
    return safe;
  }
  // A text that is known to contain no separator.
  RecordWriter& Raw(std::string_view value) {
    text_ += value;
    text_ += separator_;
    return *this;
  }
  std::string Take() { return std::move(text_); }

 private:
  char separator_;
  std::string text_;
};

// Reads fields one by one. The caller has counted them; beyond the end every field is empty.
class RecordReader {
 public:
  // `fields` must outlive the reader.
  explicit RecordReader(const std::vector<std::string>& fields) : fields_(fields) {}

  std::string_view Text() {
    return next_ < fields_.size() ? std::string_view(fields_[next_++]) : std::string_view();
  }
  int32_t Int() { return platform::ParseLeadingInt(Text()); }
  double Double() { return platform::ParseLeadingDouble(Text()); }
  platform::Date Date() { return platform::ParseDate(Text()); }
  // Skips fields that are not taken.
  void Skip(size_t count) { next_ += count; }

 private:
  const std::vector<std::string>& fields_;
  size_t next_ = 0;
};

}  // namespace rvx
