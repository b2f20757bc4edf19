// Numbers and texts that do not depend on the user's locale, and never change the process's locale.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// printf into a string, with a point as decimal sign in every locale.
[[gnu::format(printf, 1, 2)]] std::string FormatText(const char* format, ...);

// Whole number as the C function atoi reads it: blanks, a sign, digits; what follows is ignored;
// 0 if there is none. Clamped to the range of int.
int ParseLeadingInt(std::string_view text);

// Number as the C function strtod reads it with a point as decimal sign; 0.0 if there is none.
double ParseLeadingDouble(std::string_view text);

// The whole text, blanks at both ends apart, is one number; otherwise nothing. Not for hexadecimal,
// "inf" or "nan".
std::optional<int> ParseInt(std::string_view text);
std::optional<double> ParseDouble(std::string_view text);

// Without blanks, TABs, CRs and LFs at both ends.
std::string Trim(std::string_view text);

// The text without any blank.
std::string RemoveBlanks(std::string_view text);

// Cuts at each separator, at most `most` pieces (0: no limit); what follows the last piece taken is
// dropped. A separator at the very end makes no empty last piece.
std::vector<std::string> SplitFields(std::string_view text, char separator, size_t most = 0);

// ASCII only: "abc" and "ABC" are equal, order of bytes otherwise. <0, 0, >0.
int CompareNoCase(std::string_view a, std::string_view b);

}  // namespace platform
