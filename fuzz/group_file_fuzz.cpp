// The file of standard groups, which somebody wrote with whatever editor.
#include <algorithm>

#include "fuzz/require.h"
#include "module/calibration/standard_group_file.h"

namespace {

using Rows = std::vector<rvx::StandardGroupRow>;

bool IsSame(const Rows& a, const Rows& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& one, const auto& other) {
    return one.name == other.name && one.temperature == other.temperature &&
           one.group == other.group;
  });
}

std::string WithWindowsLineEnds(const std::string& text) {
  std::string result;
  for (const char c : text) result += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text = fuzz::ToText(data, size);
  const Rows rows = rvx::ParseStandardGroups(text);
  for (const rvx::StandardGroupRow& row : rows) {
    for (const std::string& field : {row.name, row.temperature, row.group}) {
      fuzz::Require(field.size() <= 63, "a field is no longer than its line");
      fuzz::Require(field.find_first_of(std::string(",\0", 2)) == std::string::npos,
                    "a field holds no separator");
    }
    fuzz::Require(!row.name.empty() && !row.temperature.empty(), "a row has a name");
  }
  if (text.find('\r') == std::string::npos) {
    fuzz::Require(IsSame(rvx::ParseStandardGroups(WithWindowsLineEnds(text)), rows),
                  "line ends of either kind are the same");
  }
  return 0;
}
