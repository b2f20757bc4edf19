// The disk or the memory fails at the first, second, third ... use, once or from then on, until the
// work ends without reaching the failure. Each failure is reported, and nothing is left half done.
#include <fmt/format.h>

#include <cstdlib>

#include "tests/reliability/archive_bench.h"
#include "tests/reliability/fault_memory.h"

namespace torvell {
namespace {

constexpr int kOld = 1;
constexpr int kNew = 2;

enum class Outcome { NotOpened, Refused, Spooled, Stored };

// Opens the archive, stores a sample and closes the archive, while the planned failure occurs.
Outcome Work(const TempFolder& folder) {
  std::unique_ptr<Host> host;
  try {
    host = OpenHost(folder);
  } catch (const HostError& error) {
    EXPECT_GT(std::string(error.what()).size(), 40u) << "it is said what happened and what to do";
    return Outcome::NotOpened;
  }
  const std::string message =
      ArchiveMessageOf([&] { host->samples().StoreSample(NumberedSample(kNew)); });
  if (message.empty()) return Outcome::Stored;
  EXPECT_NE(message.find("1002.2 mPa*s"), std::string::npos) << message;
  return message.find("kept in the spool") == std::string::npos ? Outcome::Refused
                                                                : Outcome::Spooled;
}

// Checks the archive at the next start, when everything works again.
void LookAt(const TempFolder& folder, Outcome outcome, bool hasOld) {
  const auto host = OpenHost(folder);
  EXPECT_EQ(CheckIntegrity(*host), "ok");
  auto counts = CountSamples(*host);
  EXPECT_EQ(counts["oil 1"], hasOld ? 1 : 0);
  EXPECT_NE(outcome, Outcome::Refused) << "the spool has room";
  EXPECT_EQ(counts["oil 2"], outcome == Outcome::NotOpened ? 0 : 1);
  EXPECT_EQ(ArchiveMessageOf([&] { host->samples().StoreSample(NumberedSample(3)); }), "");
}

// The number of runs with each outcome.
using Outcomes = std::map<Outcome, int>;

// Whether to try every use, even where there are thousands.
bool TriesAll() { return std::getenv("RVX_EXHAUSTIVE") != nullptr; }

// Fails each use in turn. With `spread` it tries all early uses and later only some, in steps of 1
// %, since each try needs two starts.
Outcomes FailEverywhere(FaultCounter& faults, bool forEver, bool onNewFolder, bool spread) {
  Outcomes outcomes;
  constexpr int64_t kMaxRounds = 100000;
  for (int64_t from = 1; from < kMaxRounds; from += spread && !TriesAll() ? 1 + from / 100 : 1) {
    SCOPED_TRACE(fmt::format("failure {} {}", forEver ? "from" : "at", from));
    const TempFolder folder;
    if (!onNewFolder) OpenHost(folder)->samples().StoreSample(NumberedSample(kOld));
    faults.Set({from, forEver});
    const Outcome outcome = Work(folder);
    faults.Clear();
    LookAt(folder, outcome, !onNewFolder);
    if (!faults.HasFailed()) {
      EXPECT_EQ(outcome, Outcome::Stored);
      return outcomes;
    }
    ++outcomes[outcome];
    if (testing::Test::HasFailure()) return outcomes;
  }
  ADD_FAILURE() << "it never ends";
  return outcomes;
}

void Print(const char* what, Outcomes outcomes) {
  std::printf("%s: %d starts refused, %d samples spooled, %d stored\n", what,
              outcomes[Outcome::NotOpened], outcomes[Outcome::Spooled], outcomes[Outcome::Stored]);
}

struct Case {
  const char* name;
  bool forEver;
  bool onNewFolder;
};
class FaultLoop : public testing::TestWithParam<Case> {};

TEST_P(FaultLoop, Disk) {
  FaultDisk disk;
  Outcomes outcomes =
      FailEverywhere(disk.faults(), GetParam().forEver, GetParam().onNewFolder, false);
  Print("disk", outcomes);
  EXPECT_GT(outcomes[Outcome::NotOpened], 0);
  EXPECT_GT(outcomes[Outcome::Spooled], 0);
}

TEST_P(FaultLoop, Memory) {
  Outcomes outcomes =
      FailEverywhere(MemoryFaults(), GetParam().forEver, GetParam().onNewFolder, true);
  Print("memory", outcomes);
  EXPECT_GT(outcomes[Outcome::NotOpened], 0);
  EXPECT_GT(outcomes[Outcome::Spooled], 0);
}

INSTANTIATE_TEST_SUITE_P(Each, FaultLoop,
                         testing::Values(Case{"OnceInUse", false, false},
                                         Case{"ForEverInUse", true, false},
                                         Case{"OnceNew", false, true},
                                         Case{"ForEverNew", true, true}),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace torvell
