// Comma-separated text: cells in double quotes where needed, a quote in a quoted cell doubled.
// Lines end in LF or CRLF; a byte order mark at the start is skipped. Any thread.
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

// Returns all problems, one a line and at most 20, and a last line that says that nothing was
// changed.
std::string FormatProblems(const std::string& file, const std::vector<FileProblem>& problems);

struct CsvRow {
  int line = 0;  // the line that the row begins on, from 1
  std::vector<std::string> cells;
};

// Cuts a text into rows; empty lines are left out. Adds to `problems` each quote that is never
// closed and each text after a closing quote.
std::vector<CsvRow> ParseCsv(std::string_view text, std::vector<FileProblem>& problems);

// Returns the cell as it is written in a file: in quotes if it holds a comma, a quote, a line end
// or a blank at either end.
std::string CsvCell(std::string_view text);

// Returns one line with its LF.
std::string CsvLine(const std::vector<std::string>& cells);

// Checks the first row against `heading` (letter case and surrounding blanks do not matter) and the
// number of cells of each further row. Fills up short rows with empty cells.
void CheckShape(std::vector<CsvRow>& rows, const std::vector<std::string>& heading,
                std::vector<FileProblem>& problems);

// Returns the whole file; "-" reads standard input. HostError BadInput with the reason if it can't
// be read.
std::string ReadWholeFile(const std::string& path);

// Writes a file through a temporary file beside it, so that a full disk leaves the old file intact;
// "-" writes to standard output. HostError DataFolder with the reason.
void WriteWholeFile(const std::string& path, const std::string& content);

}  // namespace torvell
