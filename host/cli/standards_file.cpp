#include "host/cli/standards_file.h"

#include <fmt/format.h>

#include <cmath>
#include <map>
#include <utility>

#include "boundary/standards_text.h"
#include "platform/text.h"

namespace torvell {

namespace {

using Key = std::pair<std::string, std::string>;

std::string AcceptedTemperatures() {
  std::string text;
  for (const char* temperature : rvx::kTemperatureTexts) {
    text += (text.empty() ? "" : ", ") + platform::RemoveBlanks(temperature);
  }
  return text;
}

// Returns the stored form of a typed temperature; empty if it is none of the stored temperatures.
std::string TemperatureText(const std::string& typed) {
  const auto value = platform::ParseDouble(platform::RemoveBlanks(typed));
  if (!value) return "";
  for (const char* text : rvx::kTemperatureTexts) {
    if (platform::ParseDouble(platform::RemoveBlanks(text)) == value) return text;
  }
  return "";
}

bool IsStorable(const std::string& text) {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20) return false;
  }
  return true;
}

class RowChecker {
 public:
  explicit RowChecker(std::vector<FileProblem>& problems) : problems_(problems) {}

  StandardRow Check(const CsvRow& row) {
    StandardRow result{platform::Trim(row.cells[0]), TemperatureText(row.cells[1]),
                       platform::Trim(row.cells[2]), platform::Trim(row.cells[3])};
    if (result.name.empty() || !IsStorable(result.name)) {
      Refuse(row, 1, "a name in one line, without control characters");
    }
    if (result.temperature.empty()) Refuse(row, 2, "one of " + AcceptedTemperatures());
    const auto viscosity = platform::ParseDouble(result.viscosity);
    if (!viscosity || !std::isfinite(*viscosity) || *viscosity <= 0.0) {
      Refuse(row, 3, "a number above 0 in mPa*s, with a point as decimal sign");
    }
    if (!IsStorable(result.lot)) Refuse(row, 4, "a text in one line, without control characters");
    const auto [first, isNew] = lines_.try_emplace({result.name, result.temperature}, row.line);
    if (!isNew && !result.temperature.empty()) {
      Refuse(row, 2,
             fmt::format("one row for each name and temperature; line {} has them already",
                         first->second));
    }
    return result;
  }

 private:
  void Refuse(const CsvRow& row, int column, const std::string& accepted) {
    const size_t index = static_cast<size_t>(column) - 1;
    const std::string found = platform::Trim(row.cells[index]);
    problems_.push_back({row.line, column, StandardsFileHeading()[index],
                         found.empty() ? "an empty cell" : "\"" + found + "\"", accepted});
  }

  std::vector<FileProblem>& problems_;
  std::map<Key, int> lines_;
};

}  // namespace

const std::vector<std::string>& StandardsFileHeading() {
  static const std::vector<std::string> kHeading = {"name", "temperature", "known viscosity",
                                                    "lot"};
  return kHeading;
}

std::vector<StandardRow> ParseStandardsFile(std::string_view text,
                                            std::vector<FileProblem>& problems) {
  std::vector<CsvRow> rows = ParseCsv(text, problems);
  if (problems.empty()) CheckShape(rows, StandardsFileHeading(), problems);
  std::vector<StandardRow> result;
  if (!problems.empty()) return result;
  RowChecker checker(problems);
  for (const CsvRow& row : rows) result.push_back(checker.Check(row));
  return result;
}

std::string FormatStandardsFile(const std::vector<StandardRow>& rows) {
  std::string text = CsvLine(StandardsFileHeading());
  for (const StandardRow& row : rows) {
    text += CsvLine({row.name, platform::RemoveBlanks(row.temperature), row.viscosity, row.lot});
  }
  return text;
}

std::vector<StandardRow> ParseStandardsText(std::string_view text) {
  std::vector<StandardRow> rows;
  std::map<Key, bool> seen;
  for (;;) {
    const size_t end = text.find(rvx::kStandardsRowEnd);
    if (end == std::string_view::npos) return rows;
    auto cells = platform::SplitFields(text.substr(0, end), rvx::kStandardsCellEnd);
    text.remove_prefix(end + 1);
    cells.resize(4);
    if (seen.try_emplace({cells[0], cells[1]}, true).second) {
      rows.push_back({cells[0], cells[1], cells[2], cells[3]});
    }
  }
}

std::string FormatStandardsText(const std::vector<StandardRow>& rows) {
  std::string text;
  for (const StandardRow& row : rows) {
    for (const std::string* cell : {&row.name, &row.temperature, &row.viscosity, &row.lot}) {
      text += *cell + rvx::kStandardsCellEnd;
    }
    text += rvx::kStandardsRowEnd;
  }
  return text;
}

}  // namespace torvell
