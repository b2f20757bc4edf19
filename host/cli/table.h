// A table for people: columns as wide as their widest cell.
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
  // Heading, a rule, the rows; every line ends in LF and has no blanks at its end.
  std::string Text() const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

// Characters (code points) of a UTF-8 text: what a terminal shows of most texts.
size_t DisplayWidth(const std::string& text);

// The text without control characters, so that nothing stored can steer a terminal.
std::string Printable(const std::string& text);

}  // namespace torvell
