// A sample as a row: the columns of the archive's table SAMPLES, in order.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "boundary/sample.h"

namespace torvell {

// Null is a null or invalid date, or a number that is NaN.
using ColumnValue = std::variant<std::monostate, int64_t, double, std::string>;

enum class ColumnType { Text, Integer, Real, Date, Guid };

struct SampleColumn {
  std::string name;
  ColumnType type;
};

// "ID", "Sample ID", "Timestamp", ... "Constant 40", "Second Date", "ID Copy", "Serial Number",
// "Last Text": 61 columns.
const std::vector<SampleColumn>& SampleColumns();

// Returns the values for people and programs, in the order of SampleColumns(): GUIDs as text, dates
// as ISO 8601 ("2026-01-31T16:05:06", local time, followed by ".123" unless it is 0 ms).
std::vector<ColumnValue> SampleValues(const rvx::Sample& sample);

// Returns the values as the database keeps them: like SampleValues, but with no Null dates. The
// empty text is the null date, "!" an invalid one; both sort before every valid date.
std::vector<ColumnValue> StoredSampleValues(const rvx::Sample& sample);
// The reverse of StoredSampleValues. Returns false if a value is of the wrong type or can't be
// read.
bool SampleFromStored(const std::vector<ColumnValue>& values, rvx::Sample& sample);

}  // namespace torvell
