// A sample as a row: the columns of the archive's table SAMPLES, in order.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "boundary/sample.h"

namespace torvell {

// Null stands for a date that is null or invalid, and for a number that is none.
using ColumnValue = std::variant<std::monostate, int64_t, double, std::string>;

enum class ColumnType { Text, Integer, Real, Date, Guid };

struct SampleColumn {
  std::string name;
  ColumnType type;
};

// "ID", "Sample ID", "Timestamp", ... "Constant 40", "Second Date", "ID Copy", "Serial Number",
// "Last Text": 61 columns.
const std::vector<SampleColumn>& SampleColumns();

// The values for people and programs, in the order of SampleColumns(): GUIDs as text, dates as ISO
// 8601 ("2026-01-31T16:05:06", local time, with ".123" behind it unless 0 ms).
std::vector<ColumnValue> SampleValues(const rvx::Sample& sample);

// As it is kept: like SampleValues, but a date is never Null: the empty text is the null date, "!"
// an invalid one; both sort before every valid date.
std::vector<ColumnValue> StoredSampleValues(const rvx::Sample& sample);
// Takes StoredSampleValues back. False if a value is of the wrong type or can't be read.
bool SampleFromStored(const std::vector<ColumnValue>& values, rvx::Sample& sample);

}  // namespace torvell
