#include "host/tray/csv.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "host/core/host_error.h"
#include "platform/text.h"

namespace torvell {

namespace {

constexpr size_t kMaxProblemsShown = 20;

struct CloseFile {
  void operator()(FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, CloseFile>;

// Reads one row from `position` on; `line` counts the line ends that were passed.
class RowReader {
 public:
  RowReader(std::string_view text, std::vector<FileProblem>& problems)
      : text_(text), problems_(problems) {
    if (text_.substr(0, 3) == "\xEF\xBB\xBF") text_.remove_prefix(3);
  }

  bool AtEnd() const { return at_ >= text_.size(); }

  CsvRow Next() {
    CsvRow row;
    row.line = line_;
    for (;;) {
      row.cells.push_back(NextCell(static_cast<int>(row.cells.size()) + 1));
      if (AtEnd() || text_[at_] != ',') break;
      ++at_;
    }
    EndLine();
    return row;
  }

 private:
  std::string NextCell(int column) {
    if (!AtEnd() && text_[at_] == '"') return QuotedCell(column);
    const size_t end = std::min(text_.find_first_of(",\r\n", at_), text_.size());
    std::string cell(text_.substr(at_, end - at_));
    at_ = end;
    return cell;
  }

  std::string QuotedCell(int column) {
    const int startLine = line_;
    std::string cell;
    ++at_;
    while (!AtEnd()) {
      const char c = text_[at_++];
      if (c == '\n') ++line_;
      if (c != '"') {
        cell += c;
      } else if (!AtEnd() && text_[at_] == '"') {
        cell += '"';
        ++at_;
      } else {
        SkipBehindQuote(column);
        return cell;
      }
    }
    problems_.push_back({startLine, column, "", "a quote that is never closed",
                         "a closing quote at the end of the cell"});
    return cell;
  }

  void SkipBehindQuote(int column) {
    const size_t end = std::min(text_.find_first_of(",\r\n", at_), text_.size());
    const std::string rest(text_.substr(at_, end - at_));
    if (!platform::Trim(rest).empty()) {
      problems_.push_back({line_, column, "", "\"" + rest + "\" behind a closing quote",
                           "a comma or the end of the line; a quote inside a cell is doubled"});
    }
    at_ = end;
  }

  void EndLine() {
    if (!AtEnd() && text_[at_] == '\r') ++at_;
    if (!AtEnd() && text_[at_] == '\n') ++at_;
    ++line_;
  }

  std::string_view text_;
  std::vector<FileProblem>& problems_;
  size_t at_ = 0;
  int line_ = 1;
};

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

std::string Joined(const std::vector<std::string>& cells) {
  std::string text;
  for (const std::string& cell : cells) text += (text.empty() ? "" : ",") + cell;
  return text;
}

}  // namespace

std::string FormatProblem(const std::string& file, const FileProblem& problem) {
  std::string text = file;
  if (problem.line > 0) text += fmt::format(", line {}", problem.line);
  if (problem.column > 0) text += fmt::format(", column {}", problem.column);
  if (!problem.columnName.empty()) text += fmt::format(" ({})", problem.columnName);
  return text + fmt::format(": found {}; accepted: {}", problem.found, problem.accepted);
}

std::string FormatProblems(const std::string& file, const std::vector<FileProblem>& problems) {
  std::string text;
  for (size_t i = 0; i < problems.size() && i < kMaxProblemsShown; ++i) {
    text += FormatProblem(file, problems[i]) + "\n";
  }
  if (problems.size() > kMaxProblemsShown) {
    text += fmt::format("and {} more\n", problems.size() - kMaxProblemsShown);
  }
  return text + "Nothing of the file was taken over. Correct it and load it again.";
}

std::vector<CsvRow> ParseCsv(std::string_view text, std::vector<FileProblem>& problems) {
  std::vector<CsvRow> rows;
  RowReader reader(text, problems);
  while (!reader.AtEnd()) {
    CsvRow row = reader.Next();
    if (row.cells.size() > 1 || !platform::Trim(row.cells[0]).empty()) {
      rows.push_back(std::move(row));
    }
  }
  return rows;
}

std::string CsvCell(std::string_view text) {
  const bool needsQuotes =
      text.find_first_of(",\"\r\n") != std::string_view::npos || platform::Trim(text) != text;
  if (!needsQuotes) return std::string(text);
  std::string cell = "\"";
  for (const char c : text) {
    if (c == '"') cell += '"';
    cell += c;
  }
  return cell + "\"";
}

std::string CsvLine(const std::vector<std::string>& cells) {
  std::string line;
  for (size_t i = 0; i < cells.size(); ++i) line += (i == 0 ? "" : ",") + CsvCell(cells[i]);
  return line + "\n";
}

void CheckShape(std::vector<CsvRow>& rows, const std::vector<std::string>& heading,
                std::vector<FileProblem>& problems) {
  if (rows.empty()) {
    problems.push_back({1, 0, "", "nothing", "the heading " + Joined(heading)});
    return;
  }
  const std::vector<std::string> first = rows.front().cells;
  for (size_t i = 0; i < heading.size() || i < first.size(); ++i) {
    const std::string found = i < first.size() ? platform::Trim(first[i]) : "";
    const std::string wanted = i < heading.size() ? heading[i] : "";
    if (platform::CompareNoCase(found, wanted) == 0) continue;
    problems.push_back({rows.front().line, static_cast<int>(i) + 1, "", Quoted(found),
                        "the heading " + Joined(heading)});
    return;
  }
  rows.erase(rows.begin());
  for (CsvRow& row : rows) {
    if (row.cells.size() > heading.size()) {
      problems.push_back(
          {row.line, static_cast<int>(heading.size()) + 1, "", Quoted(row.cells[heading.size()]),
           fmt::format("{} columns; put a text with a comma into quotes", heading.size())});
    }
    row.cells.resize(heading.size());
  }
}

std::string ReadWholeFile(const std::string& path) {
  File opened;
  FILE* file = stdin;
  if (path != "-") {
    opened.reset(std::fopen(path.c_str(), "rb"));
    file = opened.get();
  }
  std::string content;
  if (file != nullptr) {
    char buffer[65536];
    size_t count = 0;
    errno = 0;
    while ((count = std::fread(buffer, 1, sizeof(buffer), file)) > 0) content.append(buffer, count);
  }
  if (file == nullptr || std::ferror(file) != 0) {
    throw HostError(HostErrorKind::BadInput,
                    fmt::format("{} can't be read: {}. Nothing was changed. Check the name and "
                                "the rights of the file.",
                                path, std::strerror(errno)));
  }
  return content;
}

void WriteWholeFile(const std::string& path, const std::string& content) {
  const bool toOutput = path == "-";
  const std::string temporary = path + ".part";
  File opened;
  FILE* file = stdout;
  if (!toOutput) {
    opened.reset(std::fopen(temporary.c_str(), "wb"));
    file = opened.get();
  }
  bool good = file != nullptr &&
              std::fwrite(content.data(), 1, content.size(), file) == content.size() &&
              std::fflush(file) == 0;
  if (good && !toOutput) {
    good = fsync(fileno(file)) == 0 && std::fclose(opened.release()) == 0 &&
           std::rename(temporary.c_str(), path.c_str()) == 0;
  }
  if (good) return;
  const std::string reason = std::strerror(errno);
  if (!toOutput) std::remove(temporary.c_str());
  throw HostError(HostErrorKind::DataFolder,
                  fmt::format("{} can't be written: {}. A file of this name that was there "
                              "before is unchanged. Choose another place or make room.",
                              toOutput ? "standard output" : path, reason));
}

}  // namespace torvell
