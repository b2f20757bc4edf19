// Samples that the database did not take.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cmath>
#include <csignal>

#include "host/core/file_handle.h"
#include "host/core/sample_spool.h"
#include "tests/host/core/temp_folder.h"

namespace torvell {
namespace {

using Samples = std::vector<SpooledSample>;

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
  for (const bool hasReserve : {true, false}) {
    rvx::Sample refused;
    EXPECT_EQ(std::filesystem::exists(folder / "samples.spool.reserve"), hasReserve);
    const std::string message = StoreUntilFull(*host, refused);
    EXPECT_NE(message.find("write it down"), std::string::npos) << message;
    EXPECT_NE(message.find("0.1 mPa*s"), std::string::npos) << message;
  }
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
  EXPECT_NE(host->notices()[1].find("Damaged lines"), std::string::npos);
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
  EXPECT_THROW(spool.TakeIn([](const Samples&) { throw std::runtime_error("no"); }),
               std::runtime_error);
  int64_t run = 0;
  spool.TakeIn([&](const Samples& samples) {
    ASSERT_EQ(samples.size(), 1u);
    run = samples[0].run;
    EXPECT_EQ(samples[0].position, 3);
    EXPECT_EQ(samples[0].attempt, 2);
  });
  EXPECT_EQ(run, 7);
  EXPECT_EQ(spool.TakeIn([](const Samples&) { FAIL(); }).unreadable, "") << "there is none";
}

// Each line is taken in exactly as it was written, or put aside.
TEST(Spool, LinesDamagedInEachWayArePutAside) {
  TempFolder folder;
  SampleSpool spool(folder / "samples.spool");
  rvx::Sample sample = MakeSample("oil");
  sample.timestamp = platform::Date(2026, 1, 31, 16, 5, 6);
  ASSERT_EQ(spool.Append({sample, 7, 3, 2}), "");
  const std::string whole = ReadFile(spool.file());
  const std::pair<std::string, std::string> damages[] = {
      {"\"run\":7", "\"run\":\"7\""},
      {"\"run\":7", "\"run\":1e300"},
      {"\"run\":7", "\"run\":18446744073709551615"},
      {"\"position\":3", "\"position\":3000000000"},
      {"\"position\":3", "\"position\":-3000000000"},
      {"\"attempt\":2,", ""},
      {"\"simulated\":false", "\"simulated\":0"},
      {"\"values\":[", "\"values\":[0,"},
      {"{\"bits\":", "{\"bits\":-"},
      {"{\"bits\":", "{\"bits\":0.5,\"\":"},
      {"{\"bits\":", "{\"bit\":"},
      {"{\"bytes\":[255,", "{\"bytes\":[256,"},
      {"{\"bytes\":[255,", "{\"bytes\":[\"\","},
      {"{\"bytes\":[255,0,10]}", "{\"bytes\":66}"},
      {"2026-01-31T16:05:06", "2026-01-31"},
      {"2026-01-31T16:05:06", "Invalid DateTime"},
      {"0.1,", "true,"},
      {"0.1,", "null,"},
      {"0.1,", ""},
      {"]}]}", "]},0]}"},
      {",{\"bytes\":[255,0,10]}]}", "]}"},
      {"{\"attempt", "\xff{\"attempt"},
  };
  std::string lines = "[]\n17\n{\"attempt\":2,\"position\":3,\"run\":7,\"values\":[]}\n";
  lines += std::string(3, '\0') + "\n";
  for (const auto& [from, to] : damages) {
    const size_t at = whole.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    lines += std::string(whole).replace(at, from.size(), to);
  }
  std::ofstream(spool.file(), std::ios::binary) << lines << "\n\n" << whole;
  Samples taken;
  const auto outcome = spool.TakeIn([&](const Samples& samples) { taken = samples; });
  EXPECT_EQ(outcome.damagedLines, 4 + static_cast<int>(std::size(damages)));
  EXPECT_EQ(outcome.notPutAside, "");
  EXPECT_EQ(ReadFile(spool.file() + ".damaged"), lines);
  ASSERT_EQ(taken.size(), 1u);
  EXPECT_EQ(taken[0].sample.id, sample.id);
}

TEST(Spool, WhatCantBeReadOrPutAsideStaysAndIsSaid) {
  TempFolder folder;
  const std::string file = folder / "samples.spool";
  std::filesystem::create_directory(file);
  {
    const auto host = OpenHost(folder);
    ASSERT_EQ(host->notices().size(), 1u);
    EXPECT_NE(host->notices()[0].find("it can't be read"), std::string::npos);
  }
  std::filesystem::remove(file);
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  EXPECT_EQ(OpenHost(folder)->notices().size(), 1u) << "it opens, and still can't be read";
  std::filesystem::remove(file);

  SampleSpool spool(file);
  ASSERT_EQ(spool.Append({MakeSample("oil"), 0, -1, 0}), "");
  std::ofstream(file, std::ios::app) << "cut off";
  const std::string before = ReadFile(file);
  std::filesystem::create_directory(file + ".damaged");
  for (const size_t notices : {2u, 1u}) {
    const auto host = OpenHost(folder);
    ASSERT_EQ(host->notices().size(), notices);
    EXPECT_NE(host->notices().back().find("They stay there"), std::string::npos);
    EXPECT_EQ(host->samples().Count(), 1);
    EXPECT_EQ(ReadFile(file), before);
  }
}

// A writer that waits for the file while another process takes it in must not write into the
// removed file, whether or not a third process has made a new one by then.
TEST(Spool, AWriterThatWaitedForTheIntakeFindsTheNewFile) {
  TempFolder folder;
  SampleSpool spool(folder / "samples.spool");
  const auto timesOpen = [&] {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code gone;
      if (std::filesystem::read_symlink(entry.path(), gone) == spool.file()) ++count;
    }
    return count;
  };
  const auto append = [&](const char* sampleId) {
    EXPECT_EQ(SampleSpool(spool.file()).Append({MakeSample(sampleId), 0, -1, 0}), "");
  };
  std::shared_ptr<platform::Thread> writer;
  const auto startWaitingWriter = [&] {
    writer = platform::StartThread("writer", [&] { append("waited"); });
    while (timesOpen() < 2) sched_yield();
  };
  const auto takeIn = [&] {
    std::string ids;
    spool.TakeIn([&](const Samples& samples) {
      for (const SpooledSample& each : samples) ids += each.sample.sampleId + " ";
    });
    return ids;
  };

  append("first");
  spool.TakeIn([&](const Samples&) { startWaitingWriter(); });
  writer->Join();
  EXPECT_EQ(takeIn(), "waited ");

  append("first");
  FileHandle intake(open(spool.file().c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_EQ(flock(intake.get(), LOCK_EX), 0);
  startWaitingWriter();
  std::filesystem::remove(spool.file());
  append("third");
  intake.Close();
  writer->Join();
  EXPECT_EQ(takeIn(), "third waited ");
}

TEST(FileHandle, AFolderIsSyncedOrItIsSaid) {
  TempFolder folder;
  EXPECT_TRUE(SyncFolderOf(folder / "file"));
  EXPECT_TRUE(SyncFolderOf("file in the present folder"));
  EXPECT_FALSE(SyncFolderOf(folder / "none/file"));
}

// The reserve is removed when there is no room for a line. A limit of the file's size plays the
// full disk. The reserve does not count against that limit, so the test can only see its removal.
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
  spool.Prepare();
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
  std::signal(SIGXFSZ, handler);

  EXPECT_NE(failure, "");
  EXPECT_EQ(ReadFile(spool.file()), before);
  EXPECT_FALSE(std::filesystem::exists(spool.file() + ".reserve")) << "there is no room for one";
}

}  // namespace
}  // namespace torvell
