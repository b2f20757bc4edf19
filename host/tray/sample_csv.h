// Samples as a CSV file: every column of the archive and whether the sample was simulated, numbers
// with a point in every locale.
#pragma once

#include <string>

#include "host/core/sample_store.h"
#include "host/tray/csv.h"

namespace torvell {

// The line of the columns' names.
std::string SampleCsvHeading();
std::string SampleCsvLine(const StoredSample& sample);
// Heading and a line for each.
std::string FormatSampleCsv(const std::vector<StoredSample>& samples);

}  // namespace torvell
