// Reading rows of SAMPLES, for the archive's own files.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <string>

#include "host/core/sample_store.h"

namespace torvell {

// The archive's columns in order, quoted, as they stand behind SELECT, and then the host's own.
std::string SampleColumnList();

// The sample in the statement's present row, whose first columns are those of SampleColumnList.
// HostError Database if a column holds what this program does not write; `file` is for the message.
StoredSample ReadSampleRow(SQLite::Statement& statement, const std::string& file);

}  // namespace torvell
