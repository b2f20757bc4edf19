// Comma-separated text: cells in double quotes where needed, a quote inside doubled; lines end in
// LF or CRLF, a byte order mark at the start is skipped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace torvell {

// One thing that is wrong with a file.
struct FileProblem {
  int line = 0;            // from 1; 0 when the file as a whole is meant
  int column = 0;          // the cell's number in its line, from 1; 0 when the line is meant
  std::string columnName;  // heading of that column; empty when there is none
  std::string found;
  std::string accepted;
};

// "tray.csv, line 3, column 4 (temperature): found "abc"; accepted: a number in degrees C".
std::string FormatProblem(const std::string& file, const FileProblem& problem);

// All of them, one a line, at most 20, and a last line that says what has been done: nothing.
std::string FormatProblems(const std::string& file, const std::vector<FileProblem>& problems);

struct CsvRow {
  int line = 0;  // the line that the row begins on, from 1
  std::vector<std::string> cells;
};

// Cuts a text into rows; empty lines are left out. A quote that is never closed and text behind a
// closing quote are added to `problems`.
std::vector<CsvRow> ParseCsv(std::string_view text, std::vector<FileProblem>& problems);

// The cell as it stands in a file: in quotes if it holds a comma, a quote, a line end or a blank at
// either end.
std::string CsvCell(std::string_view text);

// One line with its LF.
std::string CsvLine(const std::vector<std::string>& cells);

// Checks the first row against the heading that is wanted (letter case and blanks around are free)
// and each further row's number of cells, filling up short rows with empty cells.
void CheckShape(std::vector<CsvRow>& rows, const std::vector<std::string>& heading,
                std::vector<FileProblem>& problems);

// The whole file; HostError BadInput with the reason if it can't be read. "-" reads
// standard input.
std::string ReadWholeFile(const std::string& path);

// Writes a file by way of a temporary one beside it, so that a full disk leaves the old one as it
// was; HostError DataFolder with the reason. "-" writes to standard output.
void WriteWholeFile(const std::string& path, const std::string& content);

}  // namespace torvell
