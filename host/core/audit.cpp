#include "host/core/audit.h"

#include <algorithm>

#include "host/core/audit_write.h"
#include "host/core/database.h"
#include "host/core/users.h"

namespace torvell {

void AuditTrail::Add(const std::string& object, const std::string& oldValue,
                     const std::string& newValue) {
  const Actor actor = users_.ActingAs();
  WithDatabaseErrors("The change was made and could not be noted in the audit trail", [&] {
    platform::PlainGuard guard(database_.lock());
    Transaction transaction(database_);
    WriteAudit(database_, actor, {{object, oldValue, newValue}});
    transaction.Commit();
  });
}

std::vector<AuditRow> AuditTrail::Last(int64_t n) {
  std::vector<AuditRow> rows;
  WithDatabaseErrors("The audit trail could not be read", [&] {
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
  });
  std::reverse(rows.begin(), rows.end());
  return rows;
}

}  // namespace torvell
