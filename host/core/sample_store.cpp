#include "host/core/sample_store.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <limits>
#include <memory>

#include "host/core/archive_errors.h"
#include "host/core/database.h"
#include "host/core/journal.h"
#include "host/core/query_translator.h"
#include "host/core/row_binding.h"
#include "host/core/sample_rows.h"

namespace torvell {
namespace {

// The number of rows that are read under one lock.
constexpr int kPageRows = 500;

std::string InsertText() {
  std::string text = "INSERT INTO SAMPLES (" + SampleColumnList() + ") VALUES (?";
  for (size_t i = 0; i < SampleColumns().size(); ++i) text += ", ?";
  return text + ")";
}

bool IsStored(Database& database, const std::string& id) REQUIRES(database.lock()) {
  Query query(database.Prepared("SELECT 1 FROM SAMPLES WHERE \"ID\" = ?"));
  query->bind(1, id);
  return query->executeStep();
}

// Inserts the sample and its tie to a tray run, in the caller's transaction.
void Insert(Database& database, const SpooledSample& stored) REQUIRES(database.lock()) {
  static const std::string insert = InsertText();
  const std::vector<ColumnValue> values = StoredSampleValues(stored.sample);
  Query query(database.Prepared(insert));
  for (size_t i = 0; i < values.size(); ++i) BindValue(*query, static_cast<int>(i) + 1, values[i]);
  query->bind(static_cast<int>(values.size()) + 1, stored.simulated ? 1 : 0);
  query->exec();
  if (stored.run == 0) return;
  Query link(database.Prepared("INSERT INTO TRAY_RUN_SAMPLES VALUES (?, ?, ?, ?)"));
  link->bind(1, stored.run);
  link->bind(2, stored.position);
  link->bind(3, stored.attempt);
  link->bind(4, platform::FormatGuid(stored.sample.id));
  link->exec();
}

// The last row of a page.
struct PageEnd {
  std::string timestamp;
  int64_t row = 0;
};

// Returns the next page of matching rows in the order of the archive: after `end` if there is one.
// Moves `end` to the last row read.
std::vector<StoredSample> ReadPage(Database& database, const TranslatedQuery& filter,
                                   std::unique_ptr<PageEnd>& end) {
  const std::string sql = SamplePageText(filter, end != nullptr);
  std::vector<StoredSample> page;
  platform::PlainGuard guard(database.lock());
  SQLite::Statement statement(database.connection(), sql);
  int index = 0;
  for (const ColumnValue& parameter : filter.parameters) {
    BindValue(statement, ++index, parameter);
  }
  if (end) {
    statement.bind(++index, end->timestamp);
    statement.bind(++index, end->row);
  }
  statement.bind(++index, kPageRows);
  const int timestampColumn = 2;
  while (statement.executeStep()) {
    page.push_back(ReadSampleRow(statement, database.file()));
    const int rowColumn = static_cast<int>(SampleColumns().size()) + 1;
    end = std::make_unique<PageEnd>(PageEnd{statement.getColumn(timestampColumn).getString(),
                                            statement.getColumn(rowColumn).getInt64()});
  }
  return page;
}

void ForEachMatch(Database& database, const TranslatedQuery& filter,
                  const std::function<bool(const StoredSample&)>& visit) {
  std::unique_ptr<PageEnd> end;
  for (;;) {
    const std::vector<StoredSample> page = ReadPage(database, filter, end);
    for (const StoredSample& sample : page) {
      if (!visit(sample)) return;
    }
    if (page.size() < static_cast<size_t>(kPageRows)) return;
  }
}

// The figures that a person has to write down if the sample can't be kept anywhere.
std::string DescribeSample(const rvx::Sample& sample) {
  return fmt::format("\"{}\" (position {}, {:.2f} degrees C, speed {:.4f} rpm/1000, {:.1f} mPa*s)",
                     sample.sampleId, sample.position, sample.averageTemperature, sample.speed,
                     sample.viscosity);
}

rvx::ActionErrorRecord StoreFailure(const rvx::Sample& sample, const SampleOrigin& origin,
                                    const std::string& message) {
  rvx::ActionErrorRecord record;
  record.source = origin.instrument;
  record.message = message;
  record.kind = 1;
  record.typeName = sample.typeName;
  record.instrumentId = sample.instrument;
  record.tray = sample.tray;
  record.position = sample.position;
  record.sampleId = sample.sampleId;
  record.operatorName = sample.operatorName;
  record.sampleFailure = 1;
  return record;
}

std::string DescribeDamage(const std::string& spool, const SampleSpool::Outcome& outcome) {
  const std::string fate =
      outcome.notPutAside.empty()
          ? fmt::format("They are kept in {}.damaged", spool)
          : fmt::format("They stay there, since they can't be put aside in {}.damaged ({})", spool,
                        outcome.notPutAside);
  return fmt::format(
      "Damaged lines in the spool {}, probably from a crash while they were written: {}. {}; ask "
      "your service engineer.",
      spool, outcome.damagedLines, fate);
}

}  // namespace

std::string SampleColumnList() {
  std::string text;
  for (const SampleColumn& column : SampleColumns()) text += fmt::format("\"{}\", ", column.name);
  return text + "\"Simulated\"";
}

StoredSample ReadSampleRow(SQLite::Statement& statement, const std::string& file) {
  std::vector<ColumnValue> values;
  const int count = static_cast<int>(SampleColumns().size());
  values.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) values.push_back(ReadValue(statement.getColumn(i)));
  StoredSample sample;
  sample.simulated = statement.getColumn(count).getInt() != 0;
  if (!SampleFromStored(values, sample)) {
    throw HostError(
        HostErrorKind::Database,
        fmt::format("The sample of ID \"{}\" in the database {} can't be read: a column holds what "
                    "this program does not write there. Restore a copy of the file, or remove the "
                    "row from its table SAMPLES with a database tool.",
                    statement.getColumn(0).getString(), file));
  }
  return sample;
}

std::string NewestSamplesText() {
  return fmt::format("SELECT {} FROM SAMPLES ORDER BY \"Timestamp\" DESC, rowid DESC LIMIT ?",
                     SampleColumnList());
}

std::string SamplePageText(const TranslatedQuery& query, bool behind) {
  return fmt::format(
      "SELECT {}, rowid FROM SAMPLES WHERE {}{} ORDER BY \"Timestamp\", rowid LIMIT ?",
      SampleColumnList(), query.condition, behind ? " AND (\"Timestamp\", rowid) > (?, ?)" : "");
}

SampleStore::SampleStore(Database& database, TrayJournal& journal, const std::string& spoolFile)
    : database_(database), journal_(journal), spool_(spoolFile) {
  spool_.Prepare();
}

std::vector<std::string> SampleStore::TakeInSpool() {
  const auto waiting = [&](const std::string& reason) {
    return fmt::format(
        "Samples wait in the spool {} and could not be taken into the archive: {}. They stay there "
        "until the next start.",
        spool_.file(), reason);
  };
  std::vector<std::string> texts;
  try {
    int taken = 0;
    const SampleSpool::Outcome outcome =
        spool_.TakeIn([&](const auto& samples) { taken = StoreWaiting(samples); });
    if (taken > 0) {
      texts.push_back(fmt::format(
          "Samples that could not be stored earlier are in the archive now: {}.", taken));
    }
    if (!outcome.unreadable.empty()) {
      texts.push_back(waiting(
          fmt::format("it can't be read ({}); give this user the right to read and write it",
                      outcome.unreadable)));
    }
    if (outcome.damagedLines > 0) texts.push_back(DescribeDamage(spool_.file(), outcome));
  } catch (const SQLite::Exception& error) {
    texts = {waiting(DescribeDatabaseError(error))};
  }
  return texts;
}

int SampleStore::StoreWaiting(const std::vector<SpooledSample>& samples) {
  int taken = 0;
  platform::PlainGuard guard(database_.lock());
  Transaction transaction(database_);
  for (const SpooledSample& spooled : samples) {
    if (IsStored(database_, platform::FormatGuid(spooled.sample.id))) continue;
    Insert(database_, spooled);
    ++taken;
  }
  transaction.Commit();
  return taken;
}

int64_t SampleStore::Count() {
  return WithDatabaseErrors("The samples could not be read", [&] {
    platform::PlainGuard guard(database_.lock());
    Query query(database_.Prepared("SELECT COUNT(*) FROM SAMPLES"));
    query->executeStep();
    return query->getColumn(0).getInt64();
  });
}

std::vector<StoredSample> SampleStore::Last(int64_t n) {
  std::vector<StoredSample> samples;
  if (n <= 0) {
    ForEach([&](const StoredSample& sample) {
      samples.push_back(sample);
      return true;
    });
    return samples;
  }
  WithDatabaseErrors("The samples could not be read", [&] {
    platform::PlainGuard guard(database_.lock());
    Query query(database_.Prepared(NewestSamplesText()));
    query->bind(1, n);
    while (query->executeStep()) samples.push_back(ReadSampleRow(*query, database_.file()));
  });
  std::reverse(samples.begin(), samples.end());
  return samples;
}

bool SampleStore::IsSimulated(const platform::Guid& id) {
  return WithDatabaseErrors("The samples could not be read", [&] {
    platform::PlainGuard guard(database_.lock());
    Query query(database_.Prepared("SELECT \"Simulated\" FROM SAMPLES WHERE \"ID\" = ?"));
    query->bind(1, platform::FormatGuid(id));
    return query->executeStep() && query->getColumn(0).getInt() != 0;
  });
}

void SampleStore::ForEach(const std::function<bool(const StoredSample&)>& visit) {
  WithDatabaseErrors("The samples could not be read", [&] {
    ForEachMatch(database_, {"1", {}}, visit);
  });
}

void SampleStore::QuerySamples(rvx::ArrayOfSamples& out, rvx::SampleArchiveFilter* filter) {
  TranslatedQuery query{"1", {}};
  std::string problem;
  if (filter != nullptr && !TranslateQuery(filter->GetQueryText(), query, problem)) {
    RaiseArchiveException(fmt::format(
        "The samples could not be searched: the query can't be understood, {}. An "
        "apostrophe in the instrument's name causes this; take it out of the name and try again.",
        problem));
  }
  rvx::ArrayOfSamples found;
  WithArchiveErrors("The samples could not be searched", [&] {
    ForEachMatch(database_, query, [&](const StoredSample& sample) {
      if (filter == nullptr || filter->AcceptSample(sample)) found.push_back(sample);
      return true;
    });
  });
  out = std::move(found);
}

void SampleStore::StoreSample(const rvx::Sample& sample) {
  SampleOrigin origin = journal_.FindOrigin(sample);
  if (origin.run == 0) origin.simulated = simulated_;
  const SpooledSample stored{sample, origin.run, origin.position, origin.attempt, origin.simulated};
  std::string reason;
  bool isDouble = false;
  try {
    platform::PlainGuard guard(database_.lock());
    Transaction transaction(database_);
    Insert(database_, stored);
    transaction.Commit();
  } catch (const SQLite::Exception& error) {
    isDouble = error.getExtendedErrorCode() == SQLITE_CONSTRAINT_UNIQUE;
    if (!isDouble) reason = DescribeDatabaseError(error);
  }
  if (isDouble) {
    throw new rvx::ArchiveException(StoreFailure(
        sample, origin,
        fmt::format("The result of sample {} is in the archive already and was not stored again.",
                    DescribeSample(sample))));
  }
  if (!reason.empty()) {
    const std::string spoolFailure = spool_.Append(stored);
    const std::string fate =
        spoolFailure.empty()
            ? fmt::format("It is kept in the spool {} and taken into the archive at the next start",
                          spool_.file())
            : fmt::format("It could not be kept in the spool {} either ({}): write it down",
                          spool_.file(), spoolFailure);
    throw new rvx::ArchiveException(StoreFailure(
        sample, origin,
        fmt::format("The result of sample {} could not be stored in the archive: {}. {}.",
                    DescribeSample(sample), reason, fate)));
  }
  listeners_.ForEach(
      [&](SampleStoredListener& listener) { listener.SampleStored(sample, origin); });
}

}  // namespace torvell
