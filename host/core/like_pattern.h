// The Like of the archive's query language.
#pragma once

#include <string_view>

namespace torvell {

// Returns true if the whole of `text` fits `pattern`; ASCII letters match in both cases. In the
// pattern "*" and "%" match any run of characters, "?" and "_" one character, "#" a digit, "[abc]",
// "[a-z]" and "[!a]" one character of a set. "#" also matches itself, and so does an opening
// bracket without a closing one. A pattern always fits its own text, since it may be the name of an
// instrument. Characters are bytes here: a letter beyond ASCII needs a "?" for each of its bytes.
bool MatchesLikePattern(std::string_view pattern, std::string_view text);

}  // namespace torvell
