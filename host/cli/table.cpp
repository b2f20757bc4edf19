#include "host/cli/table.h"

#include <algorithm>

namespace torvell {

size_t DisplayWidth(const std::string& text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

std::string Printable(const std::string& text) {
  std::string shown = text;
  for (char& c : shown) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return shown;
}

void Table::AddRow(std::vector<std::string> cells) {
  cells.resize(columns_.size());
  for (std::string& cell : cells) cell = cell.empty() ? "-" : Printable(cell);
  rows_.push_back(std::move(cells));
}

std::string Table::Text() const {
  std::vector<size_t> widths;
  for (size_t i = 0; i < columns_.size(); ++i) {
    size_t width = DisplayWidth(columns_[i].heading);
    for (const auto& row : rows_) width = std::max(width, DisplayWidth(row[i]));
    widths.push_back(width);
  }
  std::string text;
  const auto addLine = [&](auto cellAt) {
    std::string line;
    for (size_t i = 0; i < columns_.size(); ++i) {
      const std::string cell = cellAt(i);
      const std::string padding(widths[i] - DisplayWidth(cell), ' ');
      if (i > 0) line += "  ";
      line += columns_[i].align == Align::Right ? padding + cell : cell + padding;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  };
  addLine([&](size_t i) { return columns_[i].heading; });
  addLine([&](size_t i) { return std::string(widths[i], '-'); });
  for (const auto& row : rows_) addLine([&](size_t i) { return row[i]; });
  return text;
}

}  // namespace torvell
