// Rows of the audit trail, made inside the transaction of the change that they tell of.
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

// Who makes it.
struct Actor {
  std::string user;
  int32_t level = 0;
};

// Adds a row for each change whose values differ.
void WriteAudit(Database& database, const Actor& actor, const std::vector<AuditChange>& changes)
    REQUIRES(database.lock());

// The fields of an instrument's settings text that differ. The tray is no setting and is left out.
std::vector<AuditChange> CompareSettingsTexts(const std::string& object, const std::string& before,
                                              const std::string& after);
// The rows (each ended by CR) of an analysis text that went or came.
std::vector<AuditChange> CompareRowTexts(const std::string& object, const std::string& before,
                                         const std::string& after);

}  // namespace torvell
