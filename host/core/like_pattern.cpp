#include "host/core/like_pattern.h"

#include "platform/text.h"

namespace torvell {
namespace {

char Fold(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// One element of a pattern that matches exactly one character.
struct Element {
  size_t length = 1;  // in the pattern
  bool matches = false;
};

// The set that begins at pattern[at] == '['; length 0 if it has no end.
Element MatchSet(std::string_view pattern, size_t at, char c) {
  size_t i = at + 1;
  const bool negated = i < pattern.size() && pattern[i] == '!';
  if (negated) ++i;
  const size_t end = pattern.find(']', i);
  if (end == std::string_view::npos) return {0, false};
  bool found = false;
  for (; i < end; ++i) {
    char low = pattern[i];
    char high = low;
    if (i + 2 < end && pattern[i + 1] == '-') {
      high = pattern[i + 2];
      i += 2;
    }
    auto within = [&](char candidate) { return low <= candidate && candidate <= high; };
    const char upper = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    if (within(c) || within(Fold(c)) || within(upper)) found = true;
  }
  return {end + 1 - at, found != negated};
}

Element MatchOne(std::string_view pattern, size_t at, char c) {
  const char p = pattern[at];
  switch (p) {
    case '?':
    case '_':
      return {1, true};
    case '#':
      return {1, (c >= '0' && c <= '9') || c == '#'};
    case '[': {
      const Element set = MatchSet(pattern, at, c);
      return set.length > 0 ? set : Element{1, c == '['};
    }
    default:
      return {1, Fold(p) == Fold(c)};
  }
}

bool IsRun(char c) { return c == '*' || c == '%'; }

}  // namespace

bool MatchesLikePattern(std::string_view pattern, std::string_view text) {
  if (platform::CompareNoCase(pattern, text) == 0) return true;
  // Every element but a run takes one character, so going back to the last run is enough.
  size_t p = 0;
  size_t t = 0;
  size_t runPattern = std::string_view::npos;
  size_t runText = 0;
  while (t < text.size()) {
    if (p < pattern.size() && IsRun(pattern[p])) {
      runPattern = ++p;
      runText = t;
      continue;
    }
    if (p < pattern.size()) {
      const Element element = MatchOne(pattern, p, text[t]);
      if (element.matches) {
        p += element.length;
        ++t;
        continue;
      }
    }
    if (runPattern == std::string_view::npos) return false;
    p = runPattern;
    t = ++runText;
  }
  while (p < pattern.size() && IsRun(pattern[p])) ++p;
  return p == pattern.size();
}

}  // namespace torvell
