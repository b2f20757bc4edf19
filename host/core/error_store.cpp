#include "host/core/error_store.h"

#include <algorithm>

#include "host/core/database.h"
#include "platform/log.h"

namespace torvell {

ErrorStore::ErrorStore(Database& database) : database_(database) {}

void ErrorStore::Report(ErrorReport report) {
  try {
    platform::PlainGuard guard(database_.lock());
    Transaction transaction(database_, Transaction::Durability::Process);
    Query query(database_.Prepared("INSERT INTO ERRORS VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    query->bind(1, platform::FormatIsoDate(report.time));
    query->bind(2, report.kind);
    query->bind(3, report.source);
    query->bind(4, report.message);
    query->bind(5, report.tray);
    query->bind(6, report.position);
    query->bind(7, report.sampleId);
    query->bind(8, report.operatorName);
    query->bind(9, report.sampleFailure ? 1 : 0);
    query->bind(10, report.acknowledged ? 1 : 0);
    query->bind(11, static_cast<int32_t>(report.code));
    query->exec();
    report.row = database_.connection().getLastInsertRowid();
    transaction.Commit();
  } catch (const SQLite::Exception& error) {
    report.row = 0;
    platform::Log(
        platform::LogLevel::Error,
        "A failure could not be kept (" + DescribeDatabaseError(error) + "): " + report.message);
  }
  listeners_.ForEach([&](ErrorListener& listener) { listener.ErrorReported(report); });
}

std::vector<ErrorReport> ErrorStore::Last(int64_t n) {
  std::vector<ErrorReport> reports;
  WithDatabaseErrors("The messages could not be read", [&] {
    platform::PlainGuard guard(database_.lock());
    Query query(database_.Prepared(
        "SELECT \"Time\", \"Kind\", \"Source\", \"Message\", \"Tray\", \"Position\", "
        "\"Sample ID\", \"Operator\", \"Sample Failure\", \"Acknowledged\", \"Code\", rowid FROM "
        "ERRORS "
        "ORDER BY rowid DESC LIMIT ?"));
    query->bind(1, n > 0 ? n : int64_t{-1});
    while (query->executeStep()) {
      ErrorReport report;
      report.time = platform::ParseDate(query->getColumn(0).getString());
      report.kind = query->getColumn(1).getInt();
      report.source = query->getColumn(2).getString();
      report.message = query->getColumn(3).getString();
      report.tray = query->getColumn(4).getInt();
      report.position = query->getColumn(5).getInt();
      report.sampleId = query->getColumn(6).getString();
      report.operatorName = query->getColumn(7).getString();
      report.sampleFailure = query->getColumn(8).getInt() != 0;
      report.acknowledged = query->getColumn(9).getInt() != 0;
      report.code = static_cast<rvx::MessageCode>(query->getColumn(10).getInt());
      report.row = query->getColumn(11).getInt64();
      reports.push_back(std::move(report));
    }
  });
  std::reverse(reports.begin(), reports.end());
  return reports;
}

void ErrorStore::Acknowledge(const std::vector<int64_t>& rows) {
  WithDatabaseErrors("That the messages were acknowledged could not be stored", [&] {
    platform::PlainGuard guard(database_.lock());
    Transaction transaction(database_, Transaction::Durability::Process);
    for (const int64_t row : rows) {
      Query query(database_.Prepared("UPDATE ERRORS SET \"Acknowledged\" = 1 WHERE rowid = ?"));
      query->bind(1, row);
      query->exec();
    }
    transaction.Commit();
  });
}

}  // namespace torvell
