#include "host/core/schema.h"

namespace torvell {
namespace {

// Columns of SAMPLES have no type: a column of type REAL would keep -0.0 as the integer 0, and a
// double has to come back bit for bit.
constexpr char kFirst[] = R"sql(
CREATE TABLE META ("Name" TEXT PRIMARY KEY, "Value" INTEGER NOT NULL) WITHOUT ROWID;
INSERT INTO META VALUES ('starts', 0);

CREATE TABLE SAMPLES (
  "ID" UNIQUE NOT NULL, "Sample ID", "Timestamp" NOT NULL, "Operator", "Type", "Instrument",
  "Probe ID", "Tray", "Position", "Kind", "Known Viscosity", "Speed", "Average Temperature",
  "Reserved 1", "Reserved 2", "Viscosity", "Valid",
  "Constant 1", "Constant 2", "Constant 3", "Constant 4", "Constant 5", "Constant 6", "Constant 7",
  "Constant 8", "Constant 9", "Constant 10", "Constant 11", "Constant 12", "Constant 13",
  "Constant 14", "Constant 15", "Constant 16", "Constant 17", "Constant 18", "Constant 19",
  "Constant 20", "Constant 21", "Constant 22", "Constant 23", "Constant 24", "Constant 25",
  "Constant 26", "Constant 27", "Constant 28", "Constant 29", "Constant 30", "Constant 31",
  "Constant 32", "Constant 33", "Constant 34", "Constant 35", "Constant 36", "Constant 37",
  "Constant 38", "Constant 39", "Constant 40",
  "Second Date", "ID Copy", "Serial Number", "Last Text");
CREATE INDEX SAMPLES_BY_TIME ON SAMPLES ("Timestamp");

CREATE TABLE INSTRUMENTS ("Key" TEXT PRIMARY KEY, "Text" NOT NULL) WITHOUT ROWID;
CREATE TABLE ANALYSIS_TEXTS ("Name" TEXT, "Section" TEXT, "Text" NOT NULL,
  PRIMARY KEY ("Name", "Section")) WITHOUT ROWID;
CREATE TABLE PORTS ("Name" TEXT PRIMARY KEY, "Device" NOT NULL, "Settings" NOT NULL) WITHOUT ROWID;
CREATE TABLE USERS ("Name" TEXT PRIMARY KEY, "Level" INTEGER NOT NULL, "Hash" NOT NULL)
  WITHOUT ROWID;

CREATE TABLE ERRORS ("Time" NOT NULL, "Kind" INTEGER, "Source", "Message", "Tray" INTEGER,
  "Position" INTEGER, "Sample ID", "Operator", "Sample Failure" INTEGER);

CREATE TABLE AUDIT ("Time" NOT NULL, "User", "Level" INTEGER, "Object", "Old", "New");
CREATE TRIGGER AUDIT_NO_UPDATE BEFORE UPDATE ON AUDIT
  BEGIN SELECT RAISE(ABORT, 'rows of the audit trail are never changed'); END;
CREATE TRIGGER AUDIT_NO_DELETE BEFORE DELETE ON AUDIT
  BEGIN SELECT RAISE(ABORT, 'rows of the audit trail are never deleted'); END;

CREATE TABLE TRAY_RUNS ("Run" INTEGER PRIMARY KEY AUTOINCREMENT, "Archive Key" TEXT NOT NULL,
  "Instrument", "Started" NOT NULL, "Ended", "How");
CREATE INDEX TRAY_RUNS_OPEN ON TRAY_RUNS ("Run") WHERE "Ended" IS NULL;
CREATE TABLE TRAY_RUN_POSITIONS ("Run" INTEGER, "Position" INTEGER, "Class Key", "Sample ID",
  "Tests" INTEGER,
  PRIMARY KEY ("Run", "Position")) WITHOUT ROWID;
CREATE TABLE TRAY_RUN_SAMPLES ("Run" INTEGER, "Position" INTEGER, "Attempt" INTEGER, "ID",
  PRIMARY KEY ("Run", "Position", "Attempt", "ID")) WITHOUT ROWID;
)sql";

// Only the host knows whether a sample comes from a simulated instrument, so this is in a column
// beside the record. Samples that were stored before are recognised by the simulator's serial
// number.
constexpr char kSecond[] = R"sql(
ALTER TABLE SAMPLES ADD COLUMN "Simulated" NOT NULL DEFAULT 0;
UPDATE SAMPLES SET "Simulated" = 1 WHERE "Serial Number" = 'Simulator';
)sql";

// A failure stays open until somebody has acknowledged it. Earlier reports count as acknowledged.
constexpr char kThird[] = R"sql(
ALTER TABLE ERRORS ADD COLUMN "Acknowledged" INTEGER NOT NULL DEFAULT 0;
UPDATE ERRORS SET "Acknowledged" = 1;
)sql";

// What a message is about, which selects the advice to show. Earlier messages have no code and are
// shown without advice: finding it would need all their texts here.
constexpr char kFourth[] = R"sql(
ALTER TABLE ERRORS ADD COLUMN "Code" INTEGER NOT NULL DEFAULT 0;
)sql";

}  // namespace

const char* const kSchemaSteps[] = {kFirst, kSecond, kThird, kFourth};
const int kSchemaVersion = static_cast<int>(sizeof(kSchemaSteps) / sizeof(kSchemaSteps[0]));

}  // namespace torvell
