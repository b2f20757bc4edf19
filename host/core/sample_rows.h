// Reading rows of SAMPLES, for the archive's own files.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <string>

#include "host/core/sample_store.h"

namespace torvell {

// Returns the archive's columns, quoted and in order, and then the host's own, as a list for
// SELECT.
std::string SampleColumnList();

// Reads the sample in the statement's present row, whose first columns are those of
// SampleColumnList. HostError Database if a column holds what this program never writes; `file` is
// for the message.
StoredSample ReadSampleRow(SQLite::Statement& statement, const std::string& file);

}  // namespace torvell
