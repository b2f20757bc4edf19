#include "platform/date.h"

#include <array>
#include <chrono>
#include <cmath>

#include "platform/text.h"

namespace platform {
namespace {

constexpr int64_t kMillisecondsPerDay = 86'400'000;
constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;

constexpr int64_t DaysOf(int year, int month, int day) {
  const std::chrono::year_month_day date(std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day)));
  return std::chrono::sys_days(date).time_since_epoch().count();
}

constexpr int64_t kFirstMoment = DaysOf(kFirstYear, 1, 1) * kMillisecondsPerDay;
constexpr int64_t kEndMoment = DaysOf(kLastYear + 1, 1, 1) * kMillisecondsPerDay;

constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr std::array<std::string_view, 7> kWeekdays = {"Sun", "Mon", "Tue", "Wed",
                                                       "Thu", "Fri", "Sat"};

bool IsCivilDate(int year, int month, int day) {
  if (year < kFirstYear || year > kLastYear || month < 1 || month > 12 || day < 1) return false;
  return std::chrono::year_month_day(std::chrono::year(year),
                                     std::chrono::month(static_cast<unsigned>(month)),
                                     std::chrono::day(static_cast<unsigned>(day)))
      .ok();
}

// Reads a text from the front, piece by piece. Each Take returns whether the piece was there; after
// a failure the place is unspecified.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  bool AtEnd() const { return rest_.empty(); }

  bool Take(char c) {
    if (rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  }

  // At least one blank.
  bool TakeBlanks() {
    if (!Take(' ')) return false;
    while (Take(' ')) {
    }
    return true;
  }

  // A whole number of `least` to `most` digits.
  bool TakeNumber(int* value, size_t least, size_t most) {
    size_t digits = 0;
    *value = 0;
    while (digits < most && digits < rest_.size() && rest_[digits] >= '0' && rest_[digits] <= '9') {
      *value = *value * 10 + (rest_[digits++] - '0');
    }
    rest_.remove_prefix(digits);
    return digits >= least;
  }

  // One of the words, whatever its case: its index.
  template <size_t N>
  bool TakeWord(const std::array<std::string_view, N>& words, int* index) {
    for (size_t i = 0; i < N; ++i) {
      const std::string_view word = words[i];
      if (rest_.size() < word.size() || CompareNoCase(rest_.substr(0, word.size()), word) != 0) {
        continue;
      }
      rest_.remove_prefix(word.size());
      *index = static_cast<int>(i);
      return true;
    }
    return false;
  }

 private:
  std::string_view rest_;
};

struct Parts {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, millisecond = 0;
};

// "4:05:06" or "4:05".
bool TakeTimeOfDay(Reader& reader, Parts& parts) {
  if (!reader.TakeNumber(&parts.hour, 1, 2) || !reader.Take(':') ||
      !reader.TakeNumber(&parts.minute, 2, 2)) {
    return false;
  }
  return !reader.Take(':') || reader.TakeNumber(&parts.second, 2, 2);
}

// "1/31/2026", "1/31/2026 16:05:06", "1/31/2026 4:05:06 PM".
bool ReadEnglish(std::string_view text, Parts& parts) {
  Reader reader(text);
  if (!reader.TakeNumber(&parts.month, 1, 2) || !reader.Take('/') ||
      !reader.TakeNumber(&parts.day, 1, 2) || !reader.Take('/') ||
      !reader.TakeNumber(&parts.year, 3, 4)) {
    return false;
  }
  if (reader.AtEnd()) return true;
  if (!reader.TakeBlanks() || !TakeTimeOfDay(reader, parts)) return false;
  if (reader.AtEnd()) return true;
  constexpr std::array<std::string_view, 2> kHalves = {"AM", "PM"};
  int half = 0;
  if (!reader.TakeBlanks() || !reader.TakeWord(kHalves, &half) || !reader.AtEnd()) return false;
  if (parts.hour < 1 || parts.hour > 12) return false;
  parts.hour = parts.hour % 12 + 12 * half;
  return true;
}

// "Sat Jan  1 00:00:00 1938". The weekday is not compared with the date.
bool ReadClassic(std::string_view text, Parts& parts) {
  Reader reader(text);
  int weekday = 0;
  int month = 0;
  const bool read = reader.TakeWord(kWeekdays, &weekday) && reader.TakeBlanks() &&
                    reader.TakeWord(kMonths, &month) && reader.TakeBlanks() &&
                    reader.TakeNumber(&parts.day, 1, 2) && reader.TakeBlanks() &&
                    TakeTimeOfDay(reader, parts) && reader.TakeBlanks() &&
                    reader.TakeNumber(&parts.year, 3, 4) && reader.AtEnd();
  parts.month = month + 1;
  return read;
}

// A fraction of a second of up to nine digits, cut to milliseconds.
bool TakeFraction(Reader& reader, Parts& parts) {
  int digit = 0;
  int scale = 100;
  int count = 0;
  while (count < 9 && reader.TakeNumber(&digit, 1, 1)) {
    parts.millisecond += digit * scale;
    scale /= 10;
    ++count;
  }
  return count > 0;
}

// "2026-01-31", "2026-01-31T16:05:06", with a blank in place of the T, with a fraction, with a Z.
bool ReadIso(std::string_view text, Parts& parts) {
  Reader reader(text);
  if (!reader.TakeNumber(&parts.year, 4, 4) || !reader.Take('-') ||
      !reader.TakeNumber(&parts.month, 2, 2) || !reader.Take('-') ||
      !reader.TakeNumber(&parts.day, 2, 2)) {
    return false;
  }
  if (reader.AtEnd()) return true;
  if (!reader.Take('T') && !reader.Take(' ')) return false;
  if (!TakeTimeOfDay(reader, parts)) return false;
  if (reader.Take('.') && !TakeFraction(reader, parts)) return false;
  reader.Take('Z');
  return reader.AtEnd();
}

}  // namespace

Date::Date(int year, int month, int day, int hour, int minute, int second, int millisecond) {
  if (!IsCivilDate(year, month, day) || hour < 0 || hour > 23 || minute < 0 || minute > 59 ||
      second < 0 || second > 59 || millisecond < 0 || millisecond > 999) {
    state_ = State::Invalid;
    return;
  }
  state_ = State::Valid;
  const int64_t seconds = (hour * 60 + minute) * 60 + second;
  milliseconds_ = DaysOf(year, month, day) * kMillisecondsPerDay + seconds * 1000 + millisecond;
}

Date Date::Invalid() {
  Date date;
  date.state_ = State::Invalid;
  return date;
}

Date Date::FromMilliseconds(int64_t sinceEpoch) {
  if (sinceEpoch < kFirstMoment || sinceEpoch >= kEndMoment) return Invalid();
  Date date;
  date.state_ = State::Valid;
  date.milliseconds_ = sinceEpoch;
  return date;
}

Date Date::PlusDays(double days) const {
  if (!IsValid()) return *this;
  const double milliseconds = days * static_cast<double>(kMillisecondsPerDay);
  // Also false for a number that is none.
  if (!(std::fabs(milliseconds) < static_cast<double>(kEndMoment - kFirstMoment))) return Invalid();
  return FromMilliseconds(milliseconds_ + std::llround(milliseconds));
}

Date Date::PlusMilliseconds(int64_t milliseconds) const {
  if (!IsValid()) return *this;
  if (milliseconds > kEndMoment - kFirstMoment || milliseconds < kFirstMoment - kEndMoment) {
    return Invalid();
  }
  return FromMilliseconds(milliseconds_ + milliseconds);
}

Date::Fields Date::fields() const {
  if (!IsValid()) return {};
  const std::chrono::milliseconds moment(milliseconds_);
  const auto days = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::sys_days day{days};
  const std::chrono::year_month_day date(day);
  const auto rest = static_cast<int>((moment - days).count());
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          rest / 3'600'000,
          rest / 60'000 % 60,
          rest / 1000 % 60,
          rest % 1000,
          static_cast<int>(std::chrono::weekday(day).c_encoding())};
}

std::string FormatEnglishDate(const Date& date) {
  if (date.state() == Date::State::Null) return {};
  if (!date.IsValid()) return "Invalid DateTime";
  const Date::Fields f = date.fields();
  return FormatText("%d/%d/%d %d:%02d:%02d %s", f.month, f.day, f.year,
                    f.hour % 12 == 0 ? 12 : f.hour % 12, f.minute, f.second,
                    f.hour < 12 ? "AM" : "PM");
}

Date ParseDate(std::string_view text) {
  const std::string trimmed = Trim(text);
  if (trimmed.empty()) return {};
  for (const auto read : {ReadEnglish, ReadIso, ReadClassic}) {
    Parts parts;
    if (!read(trimmed, parts)) continue;
    return Date(parts.year, parts.month, parts.day, parts.hour, parts.minute, parts.second,
                parts.millisecond);
  }
  return Date::Invalid();
}

std::string FormatIsoDate(const Date& date) {
  if (!date.IsValid()) return {};
  const Date::Fields f = date.fields();
  return FormatText("%04d-%02d-%02dT%02d:%02d:%02d", f.year, f.month, f.day, f.hour, f.minute,
                    f.second);
}

std::string FormatQueryDate(const Date& date) {
  if (!date.IsValid()) return {};
  const Date::Fields f = date.fields();
  return FormatText("%02d/%02d/%04d %02d:%02d:%02d", f.month, f.day, f.year, f.hour, f.minute,
                    f.second);
}

}  // namespace platform
