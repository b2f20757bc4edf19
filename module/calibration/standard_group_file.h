// The file of standard groups: which standard belongs to which group of ASTM D5293 at a
// temperature. A laboratory writes it; the program only reads it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace rvx {

struct StandardGroupRow {
  std::string name;
  std::string temperature;  // a temperature text; "777" if the row had none, which matches nothing
  std::string group;        // "A", "B" or "C"; anything else takes no part
};

// The rows of a file's bytes. The first line is a heading and is skipped; each other line is
// "name,temperature,group". Lines are handled in pieces of at most 63 characters, runs of commas
// count as one, fields after the third are ignored, and the last character of the third is taken
// for the line's newline and dropped, also where there is none. CR LF counts as a newline. The file
// may contain any bytes; a piece ends at a zero byte.
std::vector<StandardGroupRow> ParseStandardGroups(std::string_view bytes);

// The path of the file in the default folder, which ends in its separator.
std::string StandardGroupPath(const std::string& defaultFolder);

// The rows of a file; none if it can't be read. What comes after the first MiB of a file is
// ignored.
std::vector<StandardGroupRow> ReadStandardGroups(const std::string& path);

}  // namespace rvx
