// The database of a data folder: one connection, one lock.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "host/core/host_error.h"
#include "host/core/lock_ranks.h"
#include "platform/lock.h"

namespace torvell {

// A prepared statement in use. Its destructor resets it, so that no read transaction stays open.
class Query {
 public:
  explicit Query(SQLite::Statement& statement) : statement_(statement) {}
  ~Query() {
    statement_.tryReset();
    statement_.clearBindings();
  }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;
  SQLite::Statement* operator->() { return &statement_; }
  SQLite::Statement& operator*() { return statement_; }

 private:
  SQLite::Statement& statement_;
};

// Failures of SQLite are thrown as SQLite::Exception; DescribeDatabaseError makes them readable.
// The lock is held for one transaction or one page of rows, never while other code is called. Any
// thread.
class Database {
 public:
  // How long an operation waits for another process that has the database locked.
  static constexpr int kBusyMilliseconds = 4000;

  // Opens the file, or creates it, and brings its tables to the present version. HostError:
  // Database, NewerVersion.
  explicit Database(const std::string& file);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  platform::PlainLock& lock() RETURN_CAPABILITY(lock_) { return lock_; }
  const std::string& file() const { return file_; }

  SQLite::Database& connection() REQUIRES(lock_) { return *connection_; }
  // Returns the statement of this text, prepared once and kept. An earlier use of the same text
  // must have ended.
  SQLite::Statement& Prepared(const std::string& sql) REQUIRES(lock_);

 private:
  void Open();

  const std::string file_;
  platform::PlainLock lock_{"database", kDatabaseLockRank};
  std::unique_ptr<SQLite::Database> connection_ GUARDED_BY(lock_);
  // Declared after the connection, so that the statements are destroyed before it.
  std::map<std::string, std::unique_ptr<SQLite::Statement>> statements_ GUARDED_BY(lock_);
};

// A change that is made as a whole or not at all. Takes the write lock of the database at once, so
// that another writer can't make it fail half-way.
class Transaction {
 public:
  // How much a commit has to survive.
  enum class Durability {
    Power,   // a power cut: the disk has it when Commit returns
    Process  // the end of the process; a power cut may take it, never anything older
  };
  explicit Transaction(Database& database, Durability durability = Durability::Power)
      REQUIRES(database.lock());
  ~Transaction();  // rolls back unless committed
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit();

 private:
  void SetFlush(bool flush);

  SQLite::Database& connection_;
  SQLite::Statement& commit_;
  const Durability durability_;
  bool open_ = false;
};

// Describes the failure for people: reason, likely cause and what helps, without a full stop.
std::string DescribeDatabaseError(const SQLite::Exception& error);
// The same as a HostError of kind Database; `what` is "the samples could not be read" or the like.
HostError MakeDatabaseError(const std::string& what, const SQLite::Exception& error);

// Runs `work` and returns its result. Turns a failure of the database into the HostError of
// MakeDatabaseError. `work` takes the database's lock itself, so the lock is free again when the
// error is described.
template <class Work>
auto WithDatabaseErrors(const std::string& what, Work&& work) {
  try {
    return std::forward<Work>(work)();
  } catch (const SQLite::Exception& error) {
    throw MakeDatabaseError(what, error);
  }
}

}  // namespace torvell
