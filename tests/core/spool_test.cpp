// Samples that the database did not take.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cmath>
#include <csignal>

#include "host/core/sample_spool.h"
#include "tests/core/temp_folder.h"

namespace torvell {
namespace {

rvx::Sample MakeSample(const std::string& sampleId) {
  rvx::Sample sample;
  sample.sampleId = sampleId;
  sample.viscosity = 0.1;
  sample.constants[0] = -0.0;
  sample.constants[1] = std::numeric_limits<double>::infinity();
  sample.lastText = std::string("\xff\0\n", 3);
  return sample;
}

// The database takes no more pages, as on a full disk.
void FillDisk(Host& host) { ExecuteSql(host.database(), "PRAGMA max_page_count = 1"); }

std::string StoreUntilFull(Host& host, rvx::Sample& refused) {
  FillDisk(host);
  for (int i = 0; i < 100; ++i) {
    refused = MakeSample("refused");
    const std::string message = ArchiveMessageOf([&] { host.samples().StoreSample(refused); });
    if (!message.empty()) return message;
  }
  ADD_FAILURE() << "the database never got full";
  return {};
}

TEST(Spool, AFullDiskSpoolsAndTheNextStartTakesIn) {
  TempFolder folder;
  rvx::Sample refused;
  int64_t stored = 0;
  {
    const auto host = OpenHost(folder);
    const std::string message = StoreUntilFull(*host, refused);
    EXPECT_NE(message.find("disk is full"), std::string::npos) << message;
    EXPECT_NE(message.find("spool"), std::string::npos) << message;
    stored = host->samples().Count();
  }
  const auto host = OpenHost(folder);
  ASSERT_EQ(host->notices().size(), 1u);
  EXPECT_EQ(host->errors().Last(1).at(0).message, host->notices()[0]);
  EXPECT_EQ(host->samples().Count(), stored + 1);
  const rvx::Sample taken = host->samples().Last(1)[0];
  EXPECT_EQ(taken.id, refused.id);
  EXPECT_EQ(taken.lastText, refused.lastText);
  EXPECT_TRUE(std::signbit(taken.constants[0]));
  EXPECT_TRUE(std::isinf(taken.constants[1]));
  EXPECT_FALSE(std::filesystem::exists(folder / "samples.spool"));
}

TEST(Spool, ALockedDatabaseSpools) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  {
    platform::PlainGuard guard(host->database().lock());
    host->database().connection().setBusyTimeout(10);
  }
  SQLite::Database other(host->databaseFile(), SQLite::OPEN_READWRITE);
  other.exec("BEGIN IMMEDIATE");
  const std::string message =
      ArchiveMessageOf([&] { host->samples().StoreSample(MakeSample("oil")); });
  EXPECT_NE(message.find("locked by another program"), std::string::npos) << message;
  EXPECT_TRUE(std::filesystem::exists(folder / "samples.spool"));
  other.exec("COMMIT");
  EXPECT_EQ(ArchiveMessageOf([&] { host->samples().StoreSample(MakeSample("next")); }), "");
}

TEST(Spool, WithoutASpoolTheMessageHasTheFigures) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  std::filesystem::create_directory(folder / "samples.spool");
  rvx::Sample refused;
  const std::string message = StoreUntilFull(*host, refused);
  EXPECT_NE(message.find("write it down"), std::string::npos) << message;
  EXPECT_NE(message.find("0.1 mPa*s"), std::string::npos) << message;
}

TEST(Spool, WhatIsStoredAlreadyIsNotStoredTwice) {
  TempFolder folder;
  const rvx::Sample sample = MakeSample("oil");
  {
    const auto host = OpenHost(folder);
    host->samples().StoreSample(sample);
  }
  SampleSpool spool(folder / "samples.spool");
  ASSERT_EQ(spool.Append({sample, 0, -1, 0}), "");
  ASSERT_EQ(spool.Append({sample, 0, -1, 0}), "");
  const auto host = OpenHost(folder);
  EXPECT_EQ(host->samples().Count(), 1);
  EXPECT_TRUE(host->notices().empty());
  EXPECT_FALSE(std::filesystem::exists(folder / "samples.spool"));
}

TEST(Spool, ALineCutOffByACrashIsKeptAsideAndSpoilsNoOther) {
  TempFolder folder;
  SampleSpool spool(folder / "samples.spool");
  ASSERT_EQ(spool.Append({MakeSample("whole"), 0, -1, 0}), "");
  const std::string whole = ReadFile(spool.file());
  std::filesystem::resize_file(spool.file(), whole.size() - 30);
  ASSERT_EQ(spool.Append({MakeSample("behind"), 0, -1, 0}), "");
  const auto host = OpenHost(folder);
  ASSERT_EQ(host->notices().size(), 2u);
  EXPECT_NE(host->notices()[1].find("damaged"), std::string::npos);
  ASSERT_EQ(host->samples().Count(), 1);
  EXPECT_EQ(host->samples().All()[0].sampleId, "behind");
  EXPECT_EQ(ReadFile(spool.file() + ".damaged"), whole.substr(0, whole.size() - 30) + "\n");
}

TEST(Spool, LinesFromBeforeTheMarkAreJudgedByTheirSerialNumber) {
  TempFolder folder;
  SampleSpool spool(folder / "samples.spool");
  for (const char* serialNumber : {"Simulator", "4711"}) {
    rvx::Sample sample = MakeSample(serialNumber);
    sample.serialNumber = serialNumber;
    ASSERT_EQ(spool.Append({sample, 0, -1, 0}), "");
  }
  std::string lines = ReadFile(spool.file());
  const std::string mark = "\"simulated\":false,";
  for (size_t at = lines.find(mark); at != std::string::npos; at = lines.find(mark)) {
    lines.erase(at, mark.size());
  }
  std::ofstream(spool.file(), std::ios::binary) << lines;
  const auto host = OpenHost(folder);
  ASSERT_EQ(host->samples().Count(), 2);
  for (const rvx::Sample& sample : host->samples().All()) {
    EXPECT_EQ(host->samples().IsSimulated(sample.id), sample.serialNumber == "Simulator");
  }
}

TEST(Spool, AFailureWhileTakingInKeepsTheFile) {
  TempFolder folder;
  SampleSpool spool(folder / "samples.spool");
  ASSERT_EQ(spool.Append({MakeSample("oil"), 7, 3, 2}), "");
  EXPECT_THROW(spool.TakeIn([](const SampleSpool::Intake&) { throw std::runtime_error("no"); }),
               std::runtime_error);
  int64_t run = 0;
  EXPECT_TRUE(spool.TakeIn([&](const SampleSpool::Intake& intake) {
    ASSERT_EQ(intake.samples.size(), 1u);
    run = intake.samples[0].run;
    EXPECT_EQ(intake.samples[0].position, 3);
    EXPECT_EQ(intake.samples[0].attempt, 2);
  }));
  EXPECT_EQ(run, 7);
  EXPECT_FALSE(spool.TakeIn([](const SampleSpool::Intake&) { FAIL(); }));
}

// The reserve is given up when there is no room for a line: here a limit stands for the full disk,
// which the reserve itself does not count against, so only its removal can be seen.
TEST(Spool, TheReserveIsGivenUpAndAHalfWrittenLineTakenBack) {
  TempFolder folder;
  SampleSpool spool(folder / "samples.spool");
  spool.Prepare();
  ASSERT_TRUE(std::filesystem::exists(spool.file() + ".reserve"));
  ASSERT_EQ(spool.Append({MakeSample("first"), 0, -1, 0}), "");
  const std::string before = ReadFile(spool.file());

  struct rlimit old = {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
  const struct rlimit small = {before.size() + 10, old.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const std::string failure = spool.Append({MakeSample("second"), 0, -1, 0});
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
  std::signal(SIGXFSZ, handler);

  EXPECT_NE(failure, "");
  EXPECT_EQ(ReadFile(spool.file()), before);
  EXPECT_FALSE(std::filesystem::exists(spool.file() + ".reserve"));
}

}  // namespace
}  // namespace torvell
