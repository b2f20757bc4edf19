// The power is cut at every moment just before something becomes durable.
#include <fmt/format.h>

#include <functional>
#include <random>
#include <set>

#include "host/core/sample_spool.h"
#include "host/core/schema.h"
#include "tests/reliability/archive_bench.h"
#include "tests/reliability/fault_disk.h"

namespace torvell {
namespace {

// Draws 0 and 1 keep none and all of the unsynced writes, the others some of them.
constexpr uint64_t kDraws = 5;

struct Cut {
  std::string file;  // that was about to be synced
  FaultDisk::Image image;
  std::set<std::string> acknowledged;  // ids of the samples that were reported as stored
};

// Records what each cut would leave, while the archive goes on working.
class Cutter {
 public:
  explicit Cutter(const TempFolder& folder) : folder_(folder) {
    disk_->beforeSync = [this](const std::string& file) { CutHere(file); };
  }
  void Store(Host& host, int number) {
    host.samples().StoreSample(NumberedSample(number));
    acknowledged_.insert(NumberedSample(number).sampleId);
  }
  void Acknowledge(int number) { acknowledged_.insert(NumberedSample(number).sampleId); }
  void CutHere(const std::string& file) {
    for (uint64_t draw = 0; draw < kDraws; ++draw) {
      // The draws of one moment differ from those of another.
      const uint64_t seed = draw < 2 ? draw : draw + kDraws * cuts_.size();
      Cut cut{file, disk_->AfterPowerCut(seed), acknowledged_};
      // A line of the spool was synced before it counted as written.
      const std::string spool = ReadFile(folder_ / "samples.spool");
      if (!spool.empty()) cut.image["samples.spool"] = spool;
      cuts_.push_back(std::move(cut));
    }
  }
  // Ends the recording and returns the cuts.
  std::vector<Cut> Finish() {
    disk_.reset();
    return std::move(cuts_);
  }

 private:
  const TempFolder& folder_;
  std::unique_ptr<FaultDisk> disk_ = std::make_unique<FaultDisk>();
  std::vector<Cut> cuts_;
  std::set<std::string> acknowledged_;
};

void WriteImage(const FaultDisk::Image& image, const TempFolder& folder) {
  for (const auto& [name, bytes] : image) {
    std::ofstream(folder / name, std::ios::binary) << bytes;
  }
}

// Checks the start after a cut: every acknowledged sample is there once, and the archive works.
void LookAt(const Cut& cut) {
  const TempFolder folder;
  WriteImage(cut.image, folder);
  const auto host = OpenHost(folder);
  EXPECT_EQ(CheckIntegrity(*host), "ok");
  const auto counts = CountSamples(*host);
  for (const std::string& id : cut.acknowledged)
    EXPECT_EQ(counts.count(id), 1u) << id << " is lost";
  for (const auto& [id, count] : counts) EXPECT_EQ(count, 1) << id;
  constexpr int kNext = 1000;
  EXPECT_EQ(ArchiveMessageOf([&] { host->samples().StoreSample(NumberedSample(kNext)); }), "");
}

void LookAtAll(const std::vector<Cut>& cuts, size_t fewestSyncs) {
  std::printf("%zu cuts at %zu sync points\n", cuts.size(), cuts.size() / kDraws);
  EXPECT_GE(cuts.size(), fewestSyncs * kDraws) << "the work has fewer sync points than it needs";
  for (size_t i = 0; i < cuts.size(); ++i) {
    SCOPED_TRACE(
        fmt::format("sync point {}, of {}, draw {}", i / kDraws + 1, cuts[i].file, i % kDraws));
    LookAt(cuts[i]);
  }
}

TEST(PowerCut, WhatWasReportedAsStoredIsThereBehindEachCut) {
  const TempFolder folder;
  Cutter cutter(folder);
  int number = 0;
  for (int start = 0; start < 3; ++start) {
    const auto host = OpenHost(folder);
    // Otherwise the log would grow through the whole test, and the checkpoint into the database
    // would not be tested.
    ExecuteSql(host->database(), "PRAGMA wal_autocheckpoint = 12");
    for (int i = 0; i < 4; ++i) cutter.Store(*host, ++number);
  }
  LookAtAll(cutter.Finish(), 15);
}

TEST(PowerCut, AnArchiveOfAnOlderVersionIsMigratedOrAsItWas) {
  const TempFolder folder;
  {
    const auto host = OpenHost(folder);
    for (int number = 1; number <= 3; ++number) {
      host->samples().StoreSample(NumberedSample(number));
    }
    ExecuteSql(host->database(),
               "ALTER TABLE SAMPLES DROP COLUMN \"Simulated\"; "
               "ALTER TABLE ERRORS DROP COLUMN \"Acknowledged\"; "
               "ALTER TABLE ERRORS DROP COLUMN \"Code\"; PRAGMA user_version = 1");
  }
  Cutter cutter(folder);
  for (int number = 1; number <= 3; ++number) cutter.Acknowledge(number);
  {
    const auto host = OpenHost(folder);
    cutter.Store(*host, 4);
  }
  LookAtAll(cutter.Finish(), 3);
}

TEST(PowerCut, SpooledSamplesAreTakenInOnceThroughEachCut) {
  const TempFolder folder;
  {
    const auto host = OpenHost(folder);
    host->samples().StoreSample(NumberedSample(1));
  }
  SampleSpool spool(folder / "samples.spool");
  for (int number = 2; number <= 4; ++number) {
    ASSERT_EQ(spool.Append({NumberedSample(number), 0, -1, 0}), "");
  }
  const std::string lines = ReadFile(spool.file());
  Cutter cutter(folder);
  for (int number = 1; number <= 4; ++number) cutter.Acknowledge(number);
  {
    const auto host = OpenHost(folder);
    EXPECT_EQ(host->notices().size(), 1u);
    cutter.CutHere("nothing");
  }
  // The file was removed, and a cut may bring it back.
  std::vector<Cut> cuts = cutter.Finish();
  for (size_t i = cuts.size() - kDraws; i < cuts.size(); ++i)
    cuts[i].image["samples.spool"] = lines;
  LookAtAll(cuts, 2);
}

// Proves that the test can fail: without syncs the cuts lose samples.
TEST(PowerCut, AnArchiveThatDoesNotSyncLosesSamples) {
  const TempFolder folder;
  Cutter cutter(folder);
  {
    const auto host = OpenHost(folder);
    ExecuteSql(host->database(), "PRAGMA synchronous = OFF");
    for (int number = 1; number <= 4; ++number) cutter.Store(*host, number);
    cutter.CutHere("nothing");
  }
  const std::vector<Cut> cuts = cutter.Finish();
  const Cut& nothingKept = cuts[cuts.size() - kDraws];
  const TempFolder after;
  WriteImage(nothingKept.image, after);
  EXPECT_LT(OpenHost(after)->samples().Count(), 4);
}

}  // namespace
}  // namespace torvell
