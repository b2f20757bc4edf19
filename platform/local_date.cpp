#include "platform/local_date.h"

#include <langinfo.h>

#include <array>
#include <clocale>
#include <ctime>
#include <memory>
#include <string_view>
#include <type_traits>

#include "platform/text.h"

namespace platform {
namespace {

struct LocaleDeleter {
  void operator()(locale_t locale) const { freelocale(locale); }
};
using LocalePointer = std::unique_ptr<std::remove_pointer_t<locale_t>, LocaleDeleter>;

// The user's, or the neutral one where that is unknown or does not write UTF-8.
LocalePointer MakeUsersLocale() {
  constexpr int kCategories = LC_CTYPE_MASK | LC_TIME_MASK;
  LocalePointer users(newlocale(kCategories, "", nullptr));
  if (users && std::string_view(nl_langinfo_l(CODESET, users.get())) == "UTF-8") return users;
  return LocalePointer(newlocale(kCategories, "C", nullptr));
}

}  // namespace

std::string FormatLocalDate(const Date& date, const char* format) {
  if (date.state() == Date::State::Null) return {};
  const LocalePointer locale = MakeUsersLocale();
  if (!date.IsValid() || !locale) return "Invalid DateTime";
  const Date::Fields f = date.fields();
  constexpr int64_t kMillisecondsPerDay = 86'400'000;
  std::tm parts{};
  parts.tm_year = f.year - 1900;
  parts.tm_mon = f.month - 1;
  parts.tm_mday = f.day;
  parts.tm_hour = f.hour;
  parts.tm_min = f.minute;
  parts.tm_sec = f.second;
  parts.tm_wday = f.weekday;
  const int64_t sinceNewYear = date.ToMilliseconds() - Date(f.year, 1, 1).ToMilliseconds();
  parts.tm_yday = static_cast<int>(sinceNewYear / kMillisecondsPerDay);
  // A date here has no time zone, so formats that name one leave it out.
  parts.tm_isdst = -1;
  std::array<char, 256> text{};
  const size_t length = strftime_l(text.data(), text.size(), format, &parts, locale.get());
  return Trim(std::string_view(text.data(), length));
}

}  // namespace platform
