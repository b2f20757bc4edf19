// Rows of the audit trail, written in the transaction of the change that they describe.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/core/database.h"

namespace torvell {

// A change of one thing.
struct AuditChange {
  std::string object;
  std::string oldValue;
  std::string newValue;
};

// Who makes the change.
struct Actor {
  std::string user;
  int32_t level = 0;
};

// Adds a row for each change whose values differ. Requires an open Transaction; SQLite::Exception.
void WriteAudit(Database& database, const Actor& actor, const std::vector<AuditChange>& changes)
    REQUIRES(database.lock());

// Returns the fields in which two settings texts of an instrument differ. The tray is not a setting
// and is left out.
std::vector<AuditChange> CompareSettingsTexts(const std::string& object, const std::string& before,
                                              const std::string& after);
// Returns the rows (each ended by CR) of an analysis text that were removed or added.
std::vector<AuditChange> CompareRowTexts(const std::string& object, const std::string& before,
                                         const std::string& after);

}  // namespace torvell
