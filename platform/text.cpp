#include "platform/text.h"

#include <locale.h>
#include <stdlib.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace platform {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

// The "C" locale as an object, made once and kept until the process ends.
locale_t PointLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

// Puts this thread under the "C" locale for a scope; other threads do not see it.
class PointLocaleScope {
 public:
  PointLocaleScope() : before_(uselocale(PointLocale())) {}
  ~PointLocaleScope() { uselocale(before_); }
  PointLocaleScope(const PointLocaleScope&) = delete;
  PointLocaleScope& operator=(const PointLocaleScope&) = delete;

 private:
  locale_t before_;
};

// What isspace returns in the "C" locale.
bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
char LowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string_view TrimView(std::string_view text) {
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

size_t CountDigits(std::string_view text, size_t from) {
  size_t end = from;
  while (end < text.size() && IsDigit(text[end])) ++end;
  return end - from;
}

bool IsSign(std::string_view text, size_t at) {
  return at < text.size() && (text[at] == '+' || text[at] == '-');
}

// A decimal number from its first to its last character: sign, digits with or without a point,
// exponent.
bool IsDecimalNumber(std::string_view text) {
  size_t at = IsSign(text, 0) ? 1 : 0;
  const size_t whole = CountDigits(text, at);
  at += whole;
  size_t fraction = 0;
  if (at < text.size() && text[at] == '.') {
    fraction = CountDigits(text, ++at);
    at += fraction;
  }
  if (whole + fraction == 0) return false;
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    ++at;
    if (IsSign(text, at)) ++at;
    const size_t exponent = CountDigits(text, at);
    if (exponent == 0) return false;
    at += exponent;
  }
  return at == text.size();
}

}  // namespace

std::string FormatText(const char* format, ...) {
  const PointLocaleScope scope;
  char small[256];
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(small, sizeof small, format, arguments);
  va_end(arguments);
  if (length < 0) return {};
  if (static_cast<size_t>(length) < sizeof small) return {small, static_cast<size_t>(length)};

  std::string text(static_cast<size_t>(length), '\0');
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  va_end(arguments);
  return text;
}

int ParseLeadingInt(std::string_view text) {
  size_t at = 0;
  while (at < text.size() && IsSpace(text[at])) ++at;
  bool negative = false;
  if (IsSign(text, at)) negative = text[at++] == '-';
  int64_t value = 0;
  for (; at < text.size() && IsDigit(text[at]); ++at) {
    value = std::min<int64_t>(value * 10 + (text[at] - '0'), int64_t{INT_MAX} + 1);
  }
  return static_cast<int>(negative ? -value : std::min<int64_t>(value, INT_MAX));
}

double ParseLeadingDouble(std::string_view text) {
  const std::string terminated(text);
  return strtod_l(terminated.c_str(), nullptr, PointLocale());
}

std::optional<int> ParseInt(std::string_view text) {
  std::string_view number = TrimView(text);
  // from_chars takes a minus, not a plus.
  if (number.size() > 1 && number[0] == '+' && IsDigit(number[1])) number.remove_prefix(1);
  int value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error != std::errc() || end != number.data() + number.size()) return std::nullopt;
  return value;
}

std::optional<double> ParseDouble(std::string_view text) {
  const std::string_view number = TrimView(text);
  if (!IsDecimalNumber(number)) return std::nullopt;
  const double value = ParseLeadingDouble(number);
  if (!std::isfinite(value)) return std::nullopt;
  return value;
}

std::string Trim(std::string_view text) { return std::string(TrimView(text)); }

std::string RemoveBlanks(std::string_view text) {
  std::string result(text);
  std::erase(result, ' ');
  return result;
}

std::vector<std::string> SplitFields(std::string_view text, char separator, size_t most) {
  std::vector<std::string> fields;
  while (!text.empty() && (most == 0 || fields.size() < most)) {
    const size_t end = text.find(separator);
    fields.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return fields;
}

int CompareNoCase(std::string_view a, std::string_view b) {
  const size_t common = std::min(a.size(), b.size());
  for (size_t i = 0; i < common; ++i) {
    const auto left = static_cast<unsigned char>(LowerCase(a[i]));
    const auto right = static_cast<unsigned char>(LowerCase(b[i]));
    if (left != right) return left < right ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

}  // namespace platform
