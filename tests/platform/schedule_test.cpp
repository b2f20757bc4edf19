// The strategies and planned disturbances of virtual time: a seed repeats them, each is independent
// of the others, and they find faults that an undisturbed schedule never shows.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/event.h"
#include "platform/lock.h"
#include "platform/random_stream.h"
#include "platform/schedule_faults.h"
#include "platform/thread.h"
#include "platform/time_base.h"
#include "tests/platform/bases.h"

namespace platform {
namespace {

constexpr ScheduleStrategy kStrategies[] = {ScheduleStrategy::Sticky, ScheduleStrategy::Priority,
                                            ScheduleStrategy::StallHeavy, ScheduleStrategy::Uniform,
                                            ScheduleStrategy::RoundRobin};

TimeBaseOptions Unkind(uint64_t seed, ScheduleStrategy strategy) {
  TimeBaseOptions options = DrawTimeBaseOptions(seed);
  options.virtualTime.strategy = strategy;
  options.virtualTime.expectedPoints = 300;
  return options;
}

// Threads that meet in a lock, events, sleeps, starts and joins, and count what each has done.
TimeBaseFigures RunMeetings(const TimeBaseOptions& options) {
  TimeBaseFigures figures;
  RunUnderTimeBase(options, [&] {
    PlainLock lock("count", 10);
    Event bell("bell");
    int done = 0;
    std::vector<std::shared_ptr<Thread>> threads;
    for (int i = 0; i < 4; ++i) {
      threads.push_back(StartThread("t" + std::to_string(i), [&, i] {
        for (int round = 0; round < 12; ++round) {
          if (round % 3 == i % 3) bell.Set();
          bell.Wait(Milliseconds(round % 2));
          if (round == 5) StartThread("child", [] { Sleep(Milliseconds(1)); })->Join();
          const Microseconds before = MonotonicTime();
          Sleep(Milliseconds(2));
          EXPECT_GE(MonotonicTime() - before, Milliseconds(2));
          const PlainGuard guard(lock);
          ++done;
        }
      }));
    }
    for (const auto& thread : threads) thread->Join();
    EXPECT_EQ(48, done);
    figures = GetTimeBaseFigures();
    return 0;
  });
  return figures;
}

TEST(Schedule, EachStrategyIsRepeatedByItsSeedWithFibersAndThreads) {
  std::set<uint64_t> hashes;
  TimeBaseFigures sum;
  for (const ScheduleStrategy strategy : kStrategies) {
    for (uint64_t seed = 0; seed < 12; ++seed) {
      TimeBaseOptions options = Unkind(seed, strategy);
      const TimeBaseFigures once = RunMeetings(options);
      options.taskSwitch = TaskSwitch::Threads;
      const TimeBaseFigures again = RunMeetings(options);
      EXPECT_EQ(once.traceHash, again.traceHash) << NameOf(strategy) << " " << seed;
      EXPECT_EQ(once.switches, again.switches);
      EXPECT_EQ(once.stalls, again.stalls);
      hashes.insert(once.traceHash);
      sum.stalls += once.stalls;
      sum.lateWakeUps += once.lateWakeUps;
      sum.spuriousWakeUps += once.spuriousWakeUps;
    }
  }
  EXPECT_GE(hashes.size(), 58u);  // two strategies may happen to choose alike
  EXPECT_GT(sum.stalls, 500u);
  EXPECT_GT(sum.lateWakeUps, 30u);
  EXPECT_GT(sum.spuriousWakeUps, 30u);
}

// The decisions of a seed's stream, as a list that can be compared.
std::vector<int64_t> Stalls(detail::ScheduleFaults faults, int points) {
  std::vector<int64_t> stalls;
  for (int i = 0; i < points; ++i) stalls.push_back(faults.StallHere().count());
  return stalls;
}

std::vector<int64_t> Overshoots(detail::ScheduleFaults faults) {
  std::vector<int64_t> overshoots;
  for (int i = 0; i < 2000; ++i) overshoots.push_back(faults.Overshoot().count());
  return overshoots;
}

TEST(Schedule, SwitchingOneFaultOffMovesNoOther) {
  for (uint64_t seed = 0; seed < 20; ++seed) {
    VirtualOptions all = DrawTimeBaseOptions(seed).virtualTime;
    all.strategy = ScheduleStrategy::Sticky;
    all.expectedPoints = 1000;
    VirtualOptions stallsAlone = all;
    stallsAlone.lateWakeUps = stallsAlone.spuriousWakeUps = false;
    VirtualOptions noStalls = all;
    noStalls.stalls = false;
    const auto stalls = Stalls({all, seed}, 1001);
    EXPECT_EQ(stalls, Stalls({stallsAlone, seed}, 1001));
    EXPECT_EQ(Overshoots({all, seed}), Overshoots({noStalls, seed}));

    const auto count = 1001 - std::count(stalls.begin(), stalls.end(), 0);
    EXPECT_GE(count, 1);
    EXPECT_LE(count, 20);
    for (const int64_t stall : stalls) {
      EXPECT_TRUE(stall == 0 || (stall >= 1000 && stall <= 30'000'000)) << stall;
    }
    for (const int64_t overshoot : Overshoots({all, seed})) {
      EXPECT_TRUE(overshoot == 0 || (overshoot >= 1000 && overshoot <= 64'000)) << overshoot;
    }
    EXPECT_EQ(std::vector<int64_t>(1001), Stalls({noStalls, seed}, 1001));
  }
}

TEST(Schedule, SeedsDrawTheStrategiesInTheirSharesAndClocksNearTheirWrap) {
  constexpr int kSeeds = 4000;
  constexpr uint32_t kDay = 24 * 3600 * 1000;
  std::map<ScheduleStrategy, int> count;
  int nearHalf = 0;
  int nearEnd = 0;
  for (uint64_t seed = 0; seed < kSeeds; ++seed) {
    const TimeBaseOptions options = DrawTimeBaseOptions(seed);
    ++count[options.virtualTime.strategy];
    nearHalf += 0x8000'0000u - options.startTick < kDay;
    nearEnd += options.startTick != 0 && 0u - options.startTick < kDay;
  }
  const auto percent = [&](int number) { return 100.0 * number / kSeeds; };
  EXPECT_NEAR(40, percent(count[ScheduleStrategy::Sticky]), 3);
  EXPECT_NEAR(30, percent(count[ScheduleStrategy::Priority]), 3);
  EXPECT_NEAR(20, percent(count[ScheduleStrategy::StallHeavy]), 3);
  EXPECT_NEAR(5, percent(count[ScheduleStrategy::Uniform]), 1.5);
  EXPECT_NEAR(5, percent(count[ScheduleStrategy::RoundRobin]), 1.5);
  EXPECT_NEAR(12.5, percent(nearHalf), 2);
  EXPECT_NEAR(12.5, percent(nearEnd), 2);
}

// The number of 100 seeds with which a program shows its fault.
template <class Program>
int CountFound(const std::function<TimeBaseOptions(uint64_t)>& optionsOf, Program&& program) {
  int found = 0;
  for (uint64_t seed = 0; seed < 100; ++seed) {
    RunUnderTimeBase(optionsOf(seed), [&] {
      found += program();
      return 0;
    });
  }
  return found;
}

TimeBaseOptions Kind(uint64_t seed) { return VirtualCase(TaskSwitch::Fibers, seed).options; }

// A client takes a time-out as proof that nothing was done. The server has half a second to spare,
// so the fault shows only if the server is held up. True if it shows.
bool TimeoutMeansNothingWasDone() {
  Event request("request"), done("done");
  bool wasDone = false;
  const auto server = StartThread("server", [&] {
    request.Wait();
    Sleep(Milliseconds(1500));
    wasDone = true;
    done.Set();
  });
  request.Set();
  const bool answered = done.Wait(Milliseconds(2000));
  server->Join();
  return !answered && wasDone;
}

// Threads that rely on wake-ups 10 ms apart as an order. True if the order breaks.
bool SleepersTakeTurns() {
  PlainLock lock("order", 10);
  std::string order;
  const auto sleep = [&](char letter, int start) {
    Sleep(Milliseconds(start));
    for (int i = 0; i < 50; ++i) {
      {
        const PlainGuard guard(lock);
        order += letter;
      }
      Sleep(Milliseconds(20));
    }
  };
  const auto early = StartThread("early", [&] { sleep('a', 100); });
  const auto late = StartThread("late", [&] { sleep('b', 110); });
  early->Join();
  late->Join();
  return order.find("bb") != std::string::npos;
}

TEST(Schedule, UnkindnessFindsWhatAKindSchedulerNeverDoes) {
  const auto stalls = [](uint64_t seed) {
    TimeBaseOptions options = Kind(seed);
    options.virtualTime.stalls = true;
    options.virtualTime.expectedPoints = 20;
    return options;
  };
  const auto late = [](uint64_t seed) {
    TimeBaseOptions options = Kind(seed);
    options.virtualTime.lateWakeUps = true;
    return options;
  };
  EXPECT_EQ(0, CountFound(Kind, TimeoutMeansNothingWasDone));
  EXPECT_GT(CountFound(stalls, TimeoutMeansNothingWasDone), 10);
  EXPECT_EQ(0, CountFound(Kind, SleepersTakeTurns));
  EXPECT_GT(CountFound(late, SleepersTakeTurns), 10);
}

// A fault that shows only if a thread falls far behind the others between two of its steps. A
// random choice at each step never lets it fall so far. True if it shows.
bool OneThreadFallsFarBehind() {
  PlainLock lock("steps", 10);
  int others = 0;
  bool found = false;
  std::vector<std::shared_ptr<Thread>> threads;
  threads.push_back(StartThread("slow", [&] {
    int before = 0;
    for (int step = 0; step < 40; ++step) {
      const PlainGuard guard(lock);
      found = found || (step > 0 && others - before >= 60);
      before = others;
    }
  }));
  for (int i = 0; i < 3; ++i) {
    threads.push_back(StartThread("fast", [&] {
      for (int step = 0; step < 40; ++step) {
        const PlainGuard guard(lock);
        ++others;
      }
    }));
  }
  for (const auto& thread : threads) thread->Join();
  return found;
}

TEST(Schedule, PrioritiesFindWhatNeedsAThreadToFallFarBehind) {
  const auto uniform = [](uint64_t seed) {
    TimeBaseOptions options = Kind(seed);
    options.virtualTime.strategy = ScheduleStrategy::Uniform;
    return options;
  };
  const auto priority = [](uint64_t seed) {
    TimeBaseOptions options = Kind(seed);
    options.virtualTime.strategy = ScheduleStrategy::Priority;
    return options;
  };
  EXPECT_EQ(0, CountFound(uniform, OneThreadFallsFarBehind));
  EXPECT_GT(CountFound(priority, OneThreadFallsFarBehind), 5);
}

// Also while the awaited thread is held up and can go on only when time passes.
TEST(Schedule, AThreadThatAsksAgainAndAgainLetsOthersRun) {
  for (const ScheduleStrategy strategy : kStrategies) {
    for (uint64_t seed = 0; seed < 20; ++seed) {
      RunUnderTimeBase(Unkind(seed, strategy), [] {
        Event ready("ready"), go("go");
        const auto other = StartThread("other", [&] {
          go.Wait();
          ready.Set();
        });
        OpenScheduleWindow();
        go.Set();
        while (!ready.Wait(Milliseconds(0))) Sleep(Milliseconds(0));
        other->Join();
        return 0;
      });
    }
  }
}

TEST(RandomStream, StreamsPartsAndSeedsAreUnrelated) {
  std::set<uint64_t> firsts;
  size_t streams = 0;
  for (uint64_t seed = 0; seed < 50; ++seed) {
    for (const StreamId id : {StreamId::Schedule, StreamId::Stalls, StreamId::Line,
                              StreamId::Operator, StreamId::Scenario}) {
      RandomStream stream(seed, id);
      RandomStream part = stream.Part(0);
      const uint64_t firstOfPart = stream.Part(0).Next();
      firsts.insert({stream.Next(), firstOfPart, stream.Part(1).Next()});
      EXPECT_EQ(part.Next(), firstOfPart);  // independent of other draws in between
      streams += 3;
    }
  }
  EXPECT_EQ(streams, firsts.size());
}

TEST(RandomStream, ValuesKeepTheirBoundsAndShares) {
  RandomStream draws(7, StreamId::Scenario);
  std::map<int, int> octaves;
  double least = 1;
  double most = 0;
  for (int i = 0; i < 20'000; ++i) {
    const int between = draws.Between(-2, 2);
    EXPECT_TRUE(between >= -2 && between <= 2);
    EXPECT_FALSE(draws.Chance(0));
    EXPECT_TRUE(draws.Chance(1));
    const double value = draws.LogUniform(1e-6, 1e-2);
    least = std::min(least, value);
    most = std::max(most, value);
    ++octaves[static_cast<int>(std::floor(std::log10(value)))];
  }
  EXPECT_GE(least, 1e-6);
  EXPECT_LE(most, 1e-2);
  for (int decade = -6; decade < -2; ++decade) EXPECT_NEAR(5000, octaves[decade], 300) << decade;
}

}  // namespace
}  // namespace platform
