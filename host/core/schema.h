// The versions of the database's tables.
#pragma once

#include <cstddef>

namespace torvell {

// kSchemaSteps[n] takes a database of version n to version n + 1; version 0 is an empty file. The
// version is in the database's user_version. Steps are only ever added.
extern const char* const kSchemaSteps[];
extern const int kSchemaVersion;

}  // namespace torvell
