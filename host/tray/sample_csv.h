// Samples as a CSV file: every column of the archive and whether the sample was simulated, numbers
// with a point in every locale.
#pragma once

#include <string>

#include "host/core/sample_store.h"
#include "host/tray/csv.h"

namespace torvell {

// Returns the line of the columns' names.
std::string SampleCsvHeading();
std::string SampleCsvLine(const StoredSample& sample);
// Returns the heading and a line for each sample.
std::string FormatSampleCsv(const std::vector<StoredSample>& samples);

}  // namespace torvell
