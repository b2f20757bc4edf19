// A date and time of day with a state, to the second (milliseconds are kept but not written).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

// A civil date and time without a time zone. Whether it is local time or UTC is said where it is
// kept. Range: years 100 to 9999, like the desktop date type from which the format comes.
class Date {
 public:
  enum class State { Valid, Null, Invalid };

  Date() = default;  // Null
  // Invalid if the numbers are no date. month 1 to 12, day 1 to 31.
  Date(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
       int millisecond = 0);
  static Date Invalid();
  // From milliseconds since 1 January 1970 00:00:00 of the same clock.
  static Date FromMilliseconds(int64_t sinceEpoch);

  State state() const { return state_; }
  bool IsValid() const { return state_ == State::Valid; }
  // Milliseconds since 1 January 1970 00:00:00 of the same clock; 0 unless valid.
  int64_t ToMilliseconds() const { return milliseconds_; }
  // The date moved by a number of days, fractions included. Unchanged unless valid.
  Date PlusDays(double days) const;
  Date PlusMilliseconds(int64_t milliseconds) const;

  struct Fields {
    int year, month, day, hour, minute, second, millisecond, weekday /*0 Sunday*/;
  };
  Fields fields() const;  // all 0 unless valid

  bool operator==(const Date& other) const {
    return state_ == other.state_ && milliseconds_ == other.milliseconds_;
  }
  bool operator<(const Date& other) const { return milliseconds_ < other.milliseconds_; }

 private:
  State state_ = State::Null;
  int64_t milliseconds_ = 0;
};

// The fixed English form of stored texts, "1/31/2026 4:05:06 PM", in every locale. A null date
// gives the empty text, an invalid one "Invalid DateTime".
std::string FormatEnglishDate(const Date& date);

// Reads the fixed English form, and the forms that older texts may hold: without AM or PM
// (24 hours), with two-digit parts, "Sat Jan  1 00:00:00 1938", and ISO 8601. The empty text gives
// a null date, one that can't be read an invalid date.
Date ParseDate(std::string_view text);

// "2026-01-31T16:05:06"; empty unless valid.
std::string FormatIsoDate(const Date& date);

// "01/31/2026 16:05:06": month, day, year, as the archive's query language writes a date.
std::string FormatQueryDate(const Date& date);

}  // namespace platform
