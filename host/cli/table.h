// A table for people: each column is as wide as its widest cell.
#pragma once

#include <string>
#include <vector>

namespace torvell {

class Table {
 public:
  enum class Align { Left, Right };
  struct Column {
    std::string heading;  // with the unit, as "temperature (degC)"
    Align align = Align::Left;
  };
  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

  // One cell for each column. An empty cell is shown as "-".
  void AddRow(std::vector<std::string> cells);
  size_t rows() const { return rows_.size(); }
  // Returns the heading, a rule and the rows; every line ends in LF and has no trailing blanks.
  std::string Text() const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

// Returns the number of code points of a UTF-8 text, which is its width on a terminal for most
// texts.
size_t DisplayWidth(const std::string& text);

// Returns the text without control characters, so that no stored text can control a terminal.
std::string Printable(const std::string& text);

}  // namespace torvell
