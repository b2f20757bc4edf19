#include "host/tray/sample_csv.h"

#include "host/core/sample_columns.h"
#include "host/tray/number_text.h"

namespace torvell {
namespace {

std::string ValueText(const ColumnValue& value) {
  if (const auto* number = std::get_if<int64_t>(&value)) return std::to_string(*number);
  if (const auto* number = std::get_if<double>(&value)) return ExactNumber(*number);
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  return "";
}

}  // namespace

std::string SampleCsvHeading() {
  std::vector<std::string> cells;
  for (const SampleColumn& column : SampleColumns()) cells.push_back(column.name);
  cells.emplace_back("Simulated");
  return CsvLine(cells);
}

std::string SampleCsvLine(const StoredSample& sample) {
  std::vector<std::string> cells;
  for (const ColumnValue& value : SampleValues(sample)) cells.push_back(ValueText(value));
  cells.emplace_back(sample.simulated ? "1" : "0");
  return CsvLine(cells);
}

std::string FormatSampleCsv(const std::vector<StoredSample>& samples) {
  std::string text = SampleCsvHeading();
  for (const StoredSample& sample : samples) text += SampleCsvLine(sample);
  return text;
}

}  // namespace torvell
