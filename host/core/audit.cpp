#include "host/core/audit.h"

#include <algorithm>

#include "host/core/database.h"

namespace torvell {

std::vector<AuditRow> AuditTrail::Last(int64_t n) {
  std::vector<AuditRow> rows;
  try {
    platform::PlainGuard guard(database_.lock());
    Query query(database_.Prepared(
        "SELECT \"Time\", \"User\", \"Level\", \"Object\", \"Old\", \"New\" FROM AUDIT "
        "ORDER BY rowid DESC LIMIT ?"));
    query->bind(1, n > 0 ? n : int64_t{-1});
    while (query->executeStep()) {
      rows.push_back({platform::ParseDate(query->getColumn(0).getString()),
                      query->getColumn(1).getString(), query->getColumn(2).getInt(),
                      query->getColumn(3).getString(), query->getColumn(4).getString(),
                      query->getColumn(5).getString()});
    }
  } catch (const SQLite::Exception& error) {
    throw MakeDatabaseError("The audit trail could not be read", error);
  }
  std::reverse(rows.begin(), rows.end());
  return rows;
}

}  // namespace torvell
