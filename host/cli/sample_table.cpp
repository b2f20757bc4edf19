#include "host/cli/sample_table.h"

#include "host/tray/number_text.h"
#include "host/tray/sample_fields.h"

namespace torvell {
namespace {

struct CellText {
  std::string operator()(const platform::Date& date) const { return TimeText(date); }
  std::string operator()(const std::string& text) const { return text; }
  std::string operator()(int64_t number) const { return std::to_string(number); }
  std::string operator()(const ShownNumber& number) const {
    return number.isZeroNone ? OrMissing(number.value, number.decimals)
                             : FixedNumber(number.value, number.decimals);
  }
  std::string operator()(const ShownOrigin& origin) const { return OriginText(origin.isSimulated); }
};

std::vector<Table::Column> MakeColumns() {
  std::vector<Table::Column> columns;
  for (const SampleField& field : SampleFields()) {
    columns.push_back(
        {field.plainHeading, field.isNumber ? Table::Align::Right : Table::Align::Left});
  }
  return columns;
}

}  // namespace

SampleTable::SampleTable() : table_(MakeColumns()) {}

void SampleTable::Add(const StoredSample& sample) {
  std::vector<std::string> cells;
  for (const SampleField& field : SampleFields()) {
    cells.push_back(std::visit(CellText(), field.value(sample)));
  }
  table_.AddRow(cells);
}

}  // namespace torvell
