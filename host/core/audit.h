// The audit trail: who changed what, and when. Rows are added and never changed or deleted.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/date.h"

namespace torvell {

class Database;
class Users;

struct AuditRow {
  platform::Date time;  // UTC
  std::string user;
  int32_t level = 0;
  std::string object;  // "instrument RVXCOM1:0 line 3 field 7", "user anna", "port COM1"
  std::string oldValue;
  std::string newValue;
};

// Reads the trail; rows are written with the changes themselves (audit_write.h). Any thread.
class AuditTrail {
 public:
  AuditTrail(Database& database, Users& users) : database_(database), users_(users) {}
  // Adds a row that tells of a change as a whole, where its single fields already have their rows.
  // HostError Database.
  void Add(const std::string& object, const std::string& oldValue, const std::string& newValue);
  // Returns the latest n rows, oldest first; all if n <= 0. HostError Database.
  std::vector<AuditRow> Last(int64_t n);

 private:
  Database& database_;
  Users& users_;
};

}  // namespace torvell
