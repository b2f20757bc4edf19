#include "host/core/database.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <string_view>

#include "host/core/like_pattern.h"
#include "host/core/schema.h"

namespace torvell {
namespace {

// The Like of the archive; SQLite's LIKE and GLOB have other wildcards.
void LikeFunction(sqlite3_context* context, int, sqlite3_value** values) {
  auto text = [&](int index) {
    const auto* bytes = static_cast<const char*>(sqlite3_value_blob(values[index]));
    const auto size = static_cast<size_t>(sqlite3_value_bytes(values[index]));
    return bytes == nullptr ? std::string_view() : std::string_view(bytes, size);
  };
  sqlite3_result_int(context, MatchesLikePattern(text(0), text(1)) ? 1 : 0);
}

int ReadVersion(SQLite::Database& connection) {
  return connection.execAndGet("PRAGMA user_version").getInt();
}

void CheckVersion(SQLite::Database& connection, const std::string& file) {
  // Read before the version: another process may be making a new database right now, and commits
  // version and tables together.
  const bool hasTables = connection.execAndGet("SELECT count(*) FROM sqlite_master").getInt() > 0;
  const int version = ReadVersion(connection);
  if (version < 0 || (version == 0 && hasTables)) {
    throw HostError(
        HostErrorKind::Database,
        fmt::format("The database {} is damaged or belongs to another program (its tables are of "
                    "version {}). Nothing was changed. Put it aside and restore a copy of it, or "
                    "use another data folder.",
                    file, version));
  }
  if (version <= kSchemaVersion) return;
  throw HostError(
      HostErrorKind::NewerVersion,
      fmt::format(
          "The data in {} was written by a newer version of this program (its tables are of "
          "version {}, this program knows {}). Nothing was changed. Use the newer program, "
          "or another data folder.",
          file, version, kSchemaVersion));
}

void Migrate(SQLite::Database& connection, const std::string& file) {
  if (ReadVersion(connection) == kSchemaVersion) return;
  // Another process may migrate the same file: only the version that is read under the write lock
  // counts.
  SQLite::Transaction transaction(connection, SQLite::TransactionBehavior::IMMEDIATE);
  CheckVersion(connection, file);
  const int version = ReadVersion(connection);
  for (int step = version; step < kSchemaVersion; ++step) connection.exec(kSchemaSteps[step]);
  connection.exec(fmt::format("PRAGMA user_version = {}", kSchemaVersion));
  transaction.commit();
}

}  // namespace

Database::Database(const std::string& file) : file_(file) {
  try {
    Open();
  } catch (const SQLite::Exception& error) {
    throw HostError(HostErrorKind::Database,
                    fmt::format("The database {} could not be opened: {}. Nothing was changed.",
                                file, DescribeDatabaseError(error)));
  }
}

void Database::Open() {
  platform::PlainGuard guard(lock_);
  connection_ = std::make_unique<SQLite::Database>(
      file_, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, kBusyMilliseconds);
  SQLite::Database& connection = *connection_;
  if (sqlite3_db_readonly(connection.getHandle(), "main") == 1) {
    throw HostError(HostErrorKind::Database,
                    fmt::format("The database {} can only be read. Give this user the right to "
                                "write to the file and its folder, or use another data folder.",
                                file_));
  }
  CheckVersion(connection, file_);  // before anything is changed, the journal mode included
  connection.exec("PRAGMA journal_mode = WAL");
  connection.exec("PRAGMA synchronous = FULL");
  Migrate(connection, file_);
  connection.exec("PRAGMA foreign_keys = ON");
  connection.createFunction("archive_like", 2, true, nullptr, &LikeFunction);
}

SQLite::Statement& Database::Prepared(const std::string& sql) {
  std::unique_ptr<SQLite::Statement>& statement = statements_[sql];
  if (!statement) statement = std::make_unique<SQLite::Statement>(*connection_, sql);
  return *statement;
}

Transaction::Transaction(Database& database, Durability durability)
    : connection_(database.connection()),
      commit_(database.Prepared("COMMIT")),
      durability_(durability) {
  // A commit that only has to survive the process is not flushed to the disk. The next commit that
  // has to survive a power cut flushes it too.
  SetFlush(false);
  try {
    Query begin(database.Prepared("BEGIN IMMEDIATE"));
    begin->exec();
  } catch (const SQLite::Exception&) {
    SetFlush(true);
    throw;
  }
  open_ = true;
}

void Transaction::Commit() {
  Query commit(commit_);
  commit->exec();
  open_ = false;
  SetFlush(true);
}

Transaction::~Transaction() {
  if (!open_) return;
  // Some failures have already ended the transaction.
  if (sqlite3_get_autocommit(connection_.getHandle()) == 0) connection_.tryExec("ROLLBACK");
  SetFlush(true);
}

void Transaction::SetFlush(bool flush) {
  if (durability_ == Durability::Power) return;
  connection_.tryExec(flush ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = NORMAL");
}

namespace {

// SQLite uses the same error code for a missing table or column as for other failures.
bool TellsOfTables(std::string_view message) {
  return message.starts_with("no such table") || message.starts_with("no such column") ||
         message.find("has no column named") != std::string_view::npos;
}

}  // namespace

std::string DescribeDatabaseError(const SQLite::Exception& error) {
  switch (error.getErrorCode() & 0xFF) {
    case SQLITE_BUSY:
      return "it is locked by another program; end that program or wait until it is done, then try "
             "again";
    case SQLITE_FULL:
      return "the disk is full; make room on it and try again";
    case SQLITE_READONLY:
    case SQLITE_PERM:
      return "it can only be read; give this user the right to write to the file and its folder";
    case SQLITE_CANTOPEN:
      return "the file can't be opened or made; check that its folder exists and may be written to "
             "by this user";
    case SQLITE_IOERR:
      return fmt::format("reading or writing the disk failed ({}); check the disk", error.what());
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return "the file is damaged or is no database; put it aside and restore a copy of it";
    case SQLITE_ERROR:
      if (TellsOfTables(error.what())) {
        return fmt::format(
            "its tables are not as this program made them ({}); put the file aside "
            "and restore a copy of it",
            error.what());
      }
      [[fallthrough]];
    default:
      return fmt::format("{}; try again, and ask your service engineer if it fails again",
                         error.what());
  }
}

HostError MakeDatabaseError(const std::string& what, const SQLite::Exception& error) {
  return HostError(HostErrorKind::Database,
                   fmt::format("{}: the database failed, {}.", what, DescribeDatabaseError(error)));
}

}  // namespace torvell
