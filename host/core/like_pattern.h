// The Like of the archive's query language.
#pragma once

#include <string_view>

namespace torvell {

// True if `text` fits `pattern` as a whole; letters of ASCII are equal in both cases. In the
// pattern
// "*" and "%" stand for any run of characters, "?" and "_" for one, "#" for a digit, "[abc]",
// "[a-z]" and "[!a]" for one character of a set. "#" also stands for itself, an opening bracket
// without a closing one does, and a pattern always fits its own text: it may be the name of an
// instrument. Characters are bytes here: a letter beyond ASCII takes a "?" for each of its bytes.
bool MatchesLikePattern(std::string_view pattern, std::string_view text);

}  // namespace torvell
