// The archive's tables are missing, locked or damaged: each operation that needs them reports that,
// nothing is left half done, and everything works again afterwards.
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/fsuid.h>

#include "host/core/sample_spool.h"
#include "tests/host/core/fake_instrument.h"
#include "tests/host/core/temp_folder.h"

namespace torvell {
namespace {

constexpr char kKey[] = "RVXCOM1:0";

// The message for people with which a call fails, by whichever type it throws; empty if it does not
// fail.
template <class Call>
std::string MessageOf(const Call& call) {
  try {
    return ArchiveMessageOf(call);
  } catch (const HostError& error) {
    EXPECT_EQ(error.kind(), HostErrorKind::Database);
    return error.what();
  }
}

class AllSamples : public rvx::SampleArchiveFilter {
 public:
  bool AcceptSample(rvx::Sample) override { return true; }
  std::string GetQueryText() override { return "SELECT * FROM SAMPLES"; }
};

void Query(Host& host) {
  rvx::ArrayOfSamples out;
  AllSamples filter;
  host.samples().QuerySamples(out, &filter);
}

void TakeInOne(Host& host) {
  SampleSpool spool(host.dataFolder() + "/samples.spool");
  EXPECT_EQ(spool.Append({rvx::Sample(), 0, -1, 0}), "");
  for (const std::string& text : host.samples().TakeInSpool()) {
    if (text.find("are in the archive now") == std::string::npos) {
      throw HostError(HostErrorKind::Database, text);
    }
  }
}

void StoreSettings(Host& host) {
  FakeInstrument instrument;
  instrument.text = "RVX\nid\n" + platform::FormatGuid(platform::CreateGuid());
  host.instrumentTexts().StoreInstrument(kKey, &instrument);
}

void LoadSettings(Host& host) {
  FakeInstrument instrument;
  host.instrumentTexts().LoadInstrument(kKey, &instrument, 15);
}

TrayPlan MakePlan() {
  TrayPlan plan;
  plan.archiveKey = kKey;
  plan.positions = {{0, "Measure", "a", 1}};
  return plan;
}

struct Operation {
  const char* table;
  const char* said;  // beginning of the message; null: it reports nothing, by design
  std::function<void(Host&)> call;
};

const Operation kReading[] = {
    {"SAMPLES", "The samples could not be read", [](Host& host) { host.samples().Count(); }},
    {"SAMPLES", "The samples could not be read", [](Host& host) { host.samples().Last(1); }},
    {"SAMPLES", "The samples could not be read", [](Host& host) { host.samples().All(); }},
    {"SAMPLES", "The samples could not be read",
     [](Host& host) { host.samples().IsSimulated({}); }},
    {"SAMPLES", "The samples could not be read", [](Host& host) { host.samples().ReadRows({1}); }},
    {"SAMPLES", "The samples could not be searched",
     [](Host& host) { host.samples().FindRows({}); }},
    {"SAMPLES", "The samples could not be searched", Query},
    {"INSTRUMENTS", "The instrument's settings could not be read",
     [](Host& host) { host.instrumentTexts().Read(kKey); }},
    {"INSTRUMENTS", "The instrument's settings could not be read", LoadSettings},
    {"ANALYSIS_TEXTS", "\"Oils\" could not be read",
     [](Host& host) {
       std::string text;
       host.analysisTexts().ReadAnalysisText("Standards", "Oils", text);
     }},
    {"ERRORS", "The messages could not be read", [](Host& host) { host.errors().Last(1); }},
    {"AUDIT", "The audit trail could not be read", [](Host& host) { host.audit().Last(1); }},
    {"TRAY_RUNS", "The journal of trays could not be read",
     [](Host& host) { host.journal().Interrupted(); }},
    {"TRAY_RUN_POSITIONS", "The journal of trays could not be read",
     [](Host& host) { host.journal().InterruptedOf(kKey); }},
};

const Operation kWriting[] = {
    {"SAMPLES", "The result of sample", [](Host& host) { host.samples().StoreSample({}); }},
    {"SAMPLES", "Samples wait in the spool", TakeInOne},
    {"INSTRUMENTS", "The instrument's settings could not be stored", StoreSettings},
    {"AUDIT", "The instrument's settings could not be stored", StoreSettings},
    {"AUDIT", "\"Oils\" could not be stored",
     [](Host& host) {
       host.analysisTexts().WriteAnalysisText("Standards", "Oils",
                                              platform::FormatGuid(platform::CreateGuid()));
     }},
    {"AUDIT", "The change was made and could not be noted",
     [](Host& host) { host.audit().Add("constants", "old", "new"); }},
    {"ERRORS", "That the messages were acknowledged could not be stored",
     [](Host& host) {
       host.errors().Acknowledge({1, 2});
     }},
    {"ERRORS", nullptr, [](Host& host) { host.errors().Report({}); }},
    {"TRAY_RUNS", "The interrupted tray could not be closed",
     [](Host& host) { host.journal().Close(1); }},
    {"TRAY_RUN_POSITIONS", "The tray was not started",
     [](Host& host) { host.journal().End(host.journal().Begin(MakePlan()), "ended"); }},
    {"TRAY_RUNS", nullptr, [](Host& host) { host.journal().End(1, "ended"); }},
};

class ArchiveFailure : public testing::Test {
 protected:
  ArchiveFailure() {
    platform::PlainGuard guard(host_->database().lock());
    host_->database().connection().setBusyTimeout(10);
  }

  void SetUp() override {
    TrayJournal killed(host_->database(), folder_ / "trays.lock");
    killed.Begin(MakePlan());
    StoreSettings(*host_);
    host_->samples().StoreSample({});
    host_->errors().Report({});
  }

  // All rows that an operation could leave half done, in one text.
  std::string Contents() {
    std::string text;
    for (const char* each :
         {"group_concat(\"ID\") FROM SAMPLES", "group_concat(\"Text\") FROM INSTRUMENTS",
          "group_concat(\"Text\") FROM ANALYSIS_TEXTS", "count(*) FROM AUDIT",
          "group_concat(\"Acknowledged\") FROM ERRORS", "group_concat(\"Ended\") FROM TRAY_RUNS",
          "count(*) FROM TRAY_RUNS", "count(*) FROM TRAY_RUN_POSITIONS"}) {
      text += other_.execAndGet(fmt::format("SELECT {}", each)).getString() + "\n";
    }
    return text;
  }

  // Makes the operation fail, and checks its message, what it leaves in the archive, and that it
  // succeeds afterwards.
  void Try(const Operation& operation, const std::string& reason,
           const std::function<void()>& spoil, const std::function<void()>& mend) {
    SCOPED_TRACE(
        fmt::format("{} of {}", operation.said ? operation.said : "a note", operation.table));
    const std::string before = Contents();
    spoil();
    const std::string message = MessageOf([&] { operation.call(*host_); });
    mend();
    if (operation.said == nullptr) {
      EXPECT_EQ(message, "");
    } else {
      EXPECT_EQ(message.substr(0, std::string(operation.said).size()), operation.said);
      EXPECT_NE(message.find(reason), std::string::npos) << message;
    }
    EXPECT_EQ(Contents(), before);
    EXPECT_EQ(MessageOf([&] { operation.call(*host_); }), "") << "all is well again";
  }

  TempFolder folder_;
  std::unique_ptr<Host> host_ = OpenHost(folder_);
  SQLite::Database other_{host_->databaseFile(), SQLite::OPEN_READWRITE};
};

TEST_F(ArchiveFailure, AMissingTableIsSaid) {
  auto tryAll = [&](const auto& operations) {
    for (const Operation& each : operations) {
      Try(
          each, fmt::format("(no such table: {}); put the file aside and restore", each.table),
          [&] { other_.exec(fmt::format("ALTER TABLE {} RENAME TO GONE", each.table)); },
          [&] { other_.exec(fmt::format("ALTER TABLE GONE RENAME TO {}", each.table)); });
    }
  };
  tryAll(kReading);
  tryAll(kWriting);
}

TEST_F(ArchiveFailure, ALockedDatabaseRefusesWhatWrites) {
  for (const Operation& each : kWriting) {
    Try(
        each, "it is locked by another program", [&] { other_.exec("BEGIN IMMEDIATE"); },
        [&] { other_.exec("COMMIT"); });
  }
}

TEST_F(ArchiveFailure, ADatabaseThatCanOnlyBeReadRefusesWhatWrites) {
  for (const Operation& each : kWriting) {
    Try(
        each, "give this user the right to write",
        [&] { ExecuteSql(host_->database(), "PRAGMA query_only = ON"); },
        [&] { ExecuteSql(host_->database(), "PRAGMA query_only = OFF"); });
  }
}

TEST_F(ArchiveFailure, ACommitThatFailsTakesAllBack) {
  auto refuseCommits = [&](int (*hook)(void*)) {
    platform::PlainGuard guard(host_->database().lock());
    sqlite3_commit_hook(host_->database().connection().getHandle(), hook, nullptr);
  };
  for (const Operation& each : kWriting) {
    Try(
        each, "try again", [&] { refuseCommits([](void*) { return 1; }); },
        [&] { refuseCommits(nullptr); });
  }
  // Another process may get the number of a run that could not be noted.
  refuseCommits([](void*) { return 1; });
  EXPECT_NE(MessageOf([&] { host_->journal().Begin(MakePlan()); }), "");
  refuseCommits(nullptr);
  TrayJournal elsewhere(host_->database(), folder_ / "trays.lock");
  { TrayJournal(host_->database(), folder_ / "trays.lock").Begin(MakePlan()); }
  EXPECT_EQ(elsewhere.Interrupted().size(), 1u);
}

// Values that this program does not write: every operation that reads the row reports them, and the
// other rows stay readable.
TEST_F(ArchiveFailure, ADamagedRowIsSaid) {
  const std::pair<const char*, const char*> damages[] = {
      {"ID", "'0123'"},
      {"ID", "'00000000-0000-4000-8000-00000000000g'"},
      {"ID", "'00000000-0000-4000-8000-00000000000+'"},
      {"ID", "'00000000-0000-4000-8000-0000000000000'"},
      {"ID Copy", "NULL"},
      {"Timestamp", "'yesterday'"},
      {"Timestamp", "'2026-01-31'"},
      {"Timestamp", "'1/31/2026 4:05:06 PM'"},
      {"Timestamp", "'2026-01-31T10:00:00,123'"},
      {"Timestamp", "'2026-01-31T10:00:00.12'"},
      {"Timestamp", "'2026-01-31T10:00:00.1234'"},
      {"Timestamp", "'2026-01-31T10:00:00.-12'"},
      {"Second Date", "'2026-02-30T10:00:00'"},
      {"Sample ID", "17"},
      {"Tray", "70000"},
      {"Position", "1.5"},
      {"Speed", "'fast'"},
      {"Valid", "NULL"},
  };
  const int64_t rows = host_->samples().Count();
  for (const auto& [column, value] : damages) {
    SCOPED_TRACE(fmt::format("{} in {}", value, column));
    ExecuteSql(host_->database(), "CREATE TEMP TABLE WHOLE AS SELECT * FROM SAMPLES");
    other_.exec(fmt::format("UPDATE SAMPLES SET \"{}\" = {} WHERE rowid = 1", column, value));
    const auto readers = {+[](Host& host) { host.samples().Last(1); },
                          +[](Host& host) { host.samples().All(); },
                          +[](Host& host) { host.samples().ReadRows({1}); }, +Query};
    for (const auto& read : readers) {
      const std::string message = MessageOf([&] { read(*host_); });
      EXPECT_NE(message.find("can't be read: a column holds"), std::string::npos) << message;
      EXPECT_NE(message.find("Restore a copy"), std::string::npos) << message;
    }
    EXPECT_EQ(host_->samples().FindRows({}).size(), static_cast<size_t>(rows));
    EXPECT_EQ(MessageOf([&] { host_->samples().StoreSample({}); }), "");
    ExecuteSql(host_->database(),
               "DELETE FROM SAMPLES; INSERT INTO SAMPLES SELECT * FROM WHOLE; DROP TABLE WHOLE");
    EXPECT_EQ(host_->samples().All().size(), static_cast<size_t>(rows));
  }
}

TEST(Database, SaysWhatFailed) {
  const TempFolder folder;
  // Overwrites the end of the file, as a failing disk might: the latest samples are there.
  {
    const auto host = OpenHost(folder);
    ExecuteSql(host->database(), "PRAGMA synchronous = OFF");
    for (int i = 0; i < 200; ++i) host->samples().StoreSample({});
  }
  const auto size = std::filesystem::file_size(folder / "torvell.db");
  std::filesystem::resize_file(folder / "torvell.db", size / 4 * 3);
  std::ofstream(folder / "torvell.db", std::ios::app | std::ios::binary)
      << std::string(size - size / 4 * 3, '\xff');
  const auto host = OpenHost(folder);
  const std::string message = MessageOf([&] { host->samples().All(); });
  EXPECT_NE(message.find("the file is damaged"), std::string::npos) << message;
}

// Removes the superuser's rights from this thread's access to files while it lives.
class WithoutRights {
 public:
  WithoutRights() : user_(setfsuid(65534)) {}
  ~WithoutRights() { setfsuid(static_cast<uid_t>(user_)); }
  WithoutRights(const WithoutRights&) = delete;
  WithoutRights& operator=(const WithoutRights&) = delete;

 private:
  const int user_;
};

TEST(Database, OneThatCanOnlyBeReadIsNotOpened) {
  const TempFolder folder;
  OpenHost(folder);
  using std::filesystem::perms;
  std::filesystem::permissions(folder / "torvell.db", static_cast<perms>(0444));
  std::filesystem::permissions(folder.path(), static_cast<perms>(0555));
  std::string message;
  {
    const WithoutRights without;
    message = MessageOf([&] { Database database(folder / "torvell.db"); });
  }
  std::filesystem::permissions(folder.path(), perms::owner_all);
  EXPECT_NE(message.find("can only be read. Give this user the right"), std::string::npos)
      << message;
}

}  // namespace
}  // namespace torvell
