#include "host/core/journal.h"

#include <algorithm>

#include "host/core/database.h"
#include "host/core/host_error.h"
#include "host/core/run_marks.h"
#include "platform/log.h"
#include "platform/time_base.h"

namespace torvell {
namespace {

PositionState StateOf(int32_t stored, int32_t tests) {
  if (stored >= tests) return PositionState::Measured;
  return stored > 0 ? PositionState::PartlyMeasured : PositionState::NotRun;
}

std::vector<InterruptedPosition> ReadPositions(Database& database, int64_t run)
    REQUIRES(database.lock()) {
  Query query(database.Prepared(
      "SELECT \"Position\", \"Class Key\", \"Sample ID\", \"Tests\", "
      "(SELECT COUNT(*) FROM TRAY_RUN_SAMPLES s WHERE s.\"Run\" = p.\"Run\" AND s.\"Position\" = "
      "p.\"Position\" AND s.\"Attempt\" = (SELECT MAX(l.\"Attempt\") FROM TRAY_RUN_SAMPLES l WHERE "
      "l.\"Run\" = p.\"Run\" AND l.\"Position\" = p.\"Position\")) "
      "FROM TRAY_RUN_POSITIONS p WHERE \"Run\" = ? ORDER BY \"Position\""));
  query->bind(1, run);
  std::vector<InterruptedPosition> positions;
  while (query->executeStep()) {
    InterruptedPosition position;
    position.position = query->getColumn(0).getInt();
    position.classKey = query->getColumn(1).getString();
    position.sampleId = query->getColumn(2).getString();
    position.tests = query->getColumn(3).getInt();
    position.stored = query->getColumn(4).getInt();
    position.state = StateOf(position.stored, position.tests);
    positions.push_back(std::move(position));
  }
  return positions;
}

void CloseRun(Database& database, int64_t run, const std::string& how) REQUIRES(database.lock()) {
  Query query(database.Prepared(
      "UPDATE TRAY_RUNS SET \"Ended\" = ?, \"How\" = ? WHERE \"Run\" = ? AND \"Ended\" IS NULL"));
  query->bind(1, platform::FormatIsoDate(platform::LocalNow()));
  query->bind(2, how);
  query->bind(3, run);
  query->exec();
}

int64_t InsertRun(Database& database, const TrayPlan& plan) REQUIRES(database.lock()) {
  Query query(database.Prepared(
      "INSERT INTO TRAY_RUNS (\"Archive Key\", \"Instrument\", \"Started\") VALUES (?, ?, ?)"));
  query->bind(1, plan.archiveKey);
  query->bind(2, plan.instrumentId);
  query->bind(3, platform::FormatIsoDate(platform::LocalNow()));
  query->exec();
  const int64_t run = database.connection().getLastInsertRowid();
  for (const TrayPlan::Position& position : plan.positions) {
    Query insert(database.Prepared(
        "INSERT INTO TRAY_RUN_POSITIONS (\"Run\", \"Position\", \"Class Key\", \"Sample ID\", "
        "\"Tests\") VALUES (?, ?, ?, ?, ?)"));
    insert->bind(1, run);
    insert->bind(2, position.position);
    insert->bind(3, position.classKey);
    insert->bind(4, position.sampleId);
    insert->bind(5, position.tests);
    insert->exec();
  }
  return run;
}

void LogFailure(const SQLite::Exception& error) {
  platform::Log(platform::LogLevel::Error,
                "The tray's progress could not be noted: " + DescribeDatabaseError(error));
}

}  // namespace

TrayJournal::TrayJournal(Database& database, const std::string& marksFile)
    : database_(database), marks_(std::make_unique<RunMarks>(marksFile)) {}

TrayJournal::~TrayJournal() = default;

std::vector<InterruptedTray> TrayJournal::Interrupted() {
  std::vector<InterruptedTray> trays;
  WithDatabaseErrors("The journal of trays could not be read", [&] {
    platform::PlainGuard guard(lock_);
    platform::PlainGuard databaseGuard(database_.lock());
    Query query(database_.Prepared(
        "SELECT \"Run\", \"Archive Key\", \"Instrument\", \"Started\" FROM TRAY_RUNS "
        "WHERE \"Ended\" IS NULL ORDER BY \"Run\" DESC"));
    while (query->executeStep()) {
      InterruptedTray tray;
      tray.run = query->getColumn(0).getInt64();
      if (live_.count(tray.run) != 0 || marks_->IsTakenElsewhere(tray.run)) continue;
      tray.archiveKey = query->getColumn(1).getString();
      tray.instrumentId = query->getColumn(2).getString();
      tray.started = platform::ParseDate(query->getColumn(3).getString());
      tray.positions = ReadPositions(database_, tray.run);
      trays.push_back(std::move(tray));
    }
  });
  return trays;
}

std::optional<InterruptedTray> TrayJournal::InterruptedOf(const std::string& archiveKey) {
  for (InterruptedTray& tray : Interrupted()) {
    if (tray.archiveKey == archiveKey) return std::move(tray);
  }
  return std::nullopt;
}

void TrayJournal::Close(int64_t run) {
  WithDatabaseErrors("The interrupted tray could not be closed", [&] {
    platform::PlainGuard databaseGuard(database_.lock());
    Transaction transaction(database_);
    CloseRun(database_, run, "closed");
    transaction.Commit();
  });
}

int64_t TrayJournal::Begin(const TrayPlan& plan) {
  const std::vector<InterruptedTray> interrupted = Interrupted();
  platform::PlainGuard guard(lock_);
  int64_t run = 0;
  try {
    platform::PlainGuard databaseGuard(database_.lock());
    Transaction transaction(database_);
    for (const InterruptedTray& old : interrupted) {
      if (old.archiveKey == plan.archiveKey) CloseRun(database_, old.run, "replaced");
    }
    run = InsertRun(database_, plan);
    // Marked before other processes can see the row, so that it never looks interrupted.
    if (!marks_->Take(run)) {
      throw HostError(HostErrorKind::Database,
                      "The tray was not started, since another program on this data folder is just "
                      "giving up a run of the same number. Nothing was changed. Start it again.");
    }
    transaction.Commit();

    LiveRun live;
    live.instrument = plan.instrument;
    live.instrumentId = plan.instrumentId;
    live.serialNumber = plan.serialNumber;
    live.simulated = plan.simulated;
    for (const TrayPlan::Position& position : plan.positions) live.attempts[position.position] = 0;
    live_[run] = std::move(live);
    return run;
  } catch (const SQLite::Exception& error) {
    // The number will be used by another run, perhaps of another process.
    marks_->Release(run);
    throw MakeDatabaseError("The tray was not started, since it could not be noted", error);
  }
}

void TrayJournal::NoteSampleStarted(int64_t run, int32_t position) {
  platform::PlainGuard guard(lock_);
  auto found = live_.find(run);
  if (found == live_.end()) return;
  LiveRun& live = found->second;
  auto attempt = live.attempts.find(position);
  if (attempt == live.attempts.end()) return;  // an empty position
  live.position = position;
  live.attempt = ++attempt->second;
  live.thread = platform::CurrentThreadId();
}

void TrayJournal::NoteSampleStatus(int64_t run, int32_t position) {
  platform::PlainGuard guard(lock_);
  auto found = live_.find(run);
  if (found == live_.end() || found->second.position != position) return;
  found->second.thread = platform::CurrentThreadId();
}

void TrayJournal::NoteSampleFinished(int64_t run, int32_t position) {
  platform::PlainGuard guard(lock_);
  auto found = live_.find(run);
  if (found == live_.end() || found->second.attempts.count(position) == 0) return;
  found->second.position = -1;
  found->second.thread = 0;
}

void TrayJournal::End(int64_t run, const std::string& how) {
  platform::PlainGuard guard(lock_);
  live_.erase(run);
  try {
    platform::PlainGuard databaseGuard(database_.lock());
    Transaction transaction(database_);
    CloseRun(database_, run, how);
    transaction.Commit();
  } catch (const SQLite::Exception& error) {
    LogFailure(error);
  }
  marks_->Release(run);
}

SampleOrigin TrayJournal::FindOrigin(const rvx::Sample& sample) {
  const platform::ThreadId self = platform::CurrentThreadId();
  platform::PlainGuard guard(lock_);
  auto describe = [](int64_t run, const LiveRun& live) {
    return SampleOrigin{run, live.position, live.attempt, live.instrument, live.simulated};
  };
  // A test's last status comes from the thread that stores its result.
  for (const auto& [run, live] : live_) {
    if (live.position >= 0 && live.thread == self) return describe(run, live);
  }
  for (const auto& [run, live] : live_) {
    if (live.position >= 0 && live.position + 1 == sample.position &&
        live.instrumentId == sample.instrument && live.serialNumber == sample.serialNumber) {
      return describe(run, live);
    }
  }
  return {};
}

}  // namespace torvell
