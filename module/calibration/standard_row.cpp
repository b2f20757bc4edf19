#include "module/calibration/standard_row.h"

#include <algorithm>

namespace rvx {
namespace {

constexpr size_t kMaxTemperatureLength = 3;
constexpr size_t kGroupLength = 2;  // a blank and the letter

}  // namespace

StandardRowText ParseStandardRow(std::string_view text) {
  StandardRowText row;
  size_t open = text.find('(');
  std::string_view name = text.substr(0, open);
  if (!name.empty() && name.back() == ' ') name.remove_suffix(1);
  row.name = name;
  while (open != std::string_view::npos) {
    const size_t close = text.find(')', open);
    if (close == std::string_view::npos) break;
    row.pieces.emplace_back(text.substr(open + 1, close - open - 1));
    open = text.find('(', close);
  }
  return row;
}

std::string FormatStandardRow(StandardRowText row) {
  std::sort(row.pieces.begin(), row.pieces.end());
  std::string text = row.name;
  for (const std::string& piece : row.pieces) text += " (" + piece + ")";
  return text;
}

std::string PieceTemperature(std::string_view piece) {
  if (piece.size() > kMaxTemperatureLength) piece.remove_suffix(kGroupLength);
  return std::string(piece);
}

std::string MakePiece(const std::vector<StandardGroupRow>& groups, const std::string& name,
                      const std::string& temperature) {
  const auto found = std::find_if(groups.begin(), groups.end(), [&](const StandardGroupRow& row) {
    return row.name == name && row.temperature == temperature;
  });
  if (found == groups.end() || found->group.size() != 1) return temperature;
  return temperature + " " + found->group;
}

}  // namespace rvx
