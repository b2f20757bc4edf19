// A standard in the list from which a calibration's oils are chosen, as a row of text:
//
//   name (T G) (T G) ...
//
// one piece for each temperature T at which it takes part, with its group G, or (T) where it has
// none. The text is all that a list keeps of a row, so everything is read back from it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "module/calibration/standard_group_file.h"

namespace rvx {

struct StandardRowText {
  std::string name;
  std::vector<std::string> pieces;  // contents without the parentheses: "-20 A"
};

// The name is the text before the first "(", without the one blank in front of it.
StandardRowText ParseStandardRow(std::string_view text);
// The pieces in ascending order of their bytes, which is the order of falling temperatures.
std::string FormatStandardRow(StandardRowText row);

// The temperature text of a piece's content.
std::string PieceTemperature(std::string_view piece);
// The content for a temperature text: with the group of the first row of the table for this name
// and temperature. A group of more than one character can't be read back and counts as none.
std::string MakePiece(const std::vector<StandardGroupRow>& groups, const std::string& name,
                      const std::string& temperature);

}  // namespace rvx
