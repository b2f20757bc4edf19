// What the platform's operations cost: a change of task, a wait that another thread ends, a lock.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"
#include "platform/time_base.h"

namespace platform {
namespace {

TimeBaseOptions OptionsOf(int64_t base) {
  TimeBaseOptions options;
  if (base == 0) return options;
  options.kind = TimeBaseKind::Virtual;
  options.taskSwitch = base == 1 ? TaskSwitch::Fibers : TaskSwitch::Threads;
  return options;
}

void EachBase(benchmark::internal::Benchmark* bench) {
  bench->ArgName("real0_fibers1_threads2")->Arg(0)->Arg(1)->Arg(2)->UseRealTime();
}

// Two threads pass an event back and forth: two waits, each with a deadline, two changes of thread.
void MeasureRoundTrips(benchmark::State& state, const TimeBaseOptions& options) {
  RunUnderTimeBase(options, [&] {
    Event ask("ask"), answer("answer"), stop("stop");
    const auto other = StartThread("other", [&] {
      while (WaitForAny({&ask, &stop}, Deadline::After(Milliseconds(2000))) != 1) answer.Set();
    });
    int64_t rounds = 0;
    for (auto _ : state) {
      ask.Set();
      answer.Wait(Milliseconds(2000));
      // Time has to move now and then, or the run counts as stuck.
      if (++rounds % 10'000 == 0) Sleep(Milliseconds(1));
    }
    stop.Set();
    other->Join();
    state.counters["switches"] = benchmark::Counter(
        static_cast<double>(GetTimeBaseFigures().switches), benchmark::Counter::kAvgIterations);
    return 0;
  });
}

void BM_EventRoundTrip(benchmark::State& state) {
  MeasureRoundTrips(state, OptionsOf(state.range(0)));
}
BENCHMARK(BM_EventRoundTrip)->Apply(EachBase);

// The same as a test harness runs it: all unkindness and all watches on, fibers.
void BM_UnkindRoundTrip(benchmark::State& state) {
  TimeBaseOptions options = DrawTimeBaseOptions(1);
  options.virtualTime.strategy = static_cast<ScheduleStrategy>(state.range(0));
  MeasureRoundTrips(state, options);
}
BENCHMARK(BM_UnkindRoundTrip)
    ->ArgName("strategy")
    ->Arg(static_cast<int64_t>(ScheduleStrategy::Sticky))
    ->Arg(static_cast<int64_t>(ScheduleStrategy::Priority))
    ->UseRealTime();

// Under virtual time: a wait that ends by its deadline, while as many others wait for later ones.
void BM_DeadlineWait(benchmark::State& state) {
  RunUnderTimeBase(OptionsOf(1), [&] {
    Event never("never"), stop("stop", Event::Mode::ManualReset);
    std::vector<std::shared_ptr<Thread>> others;
    for (int64_t i = 0; i < state.range(0); ++i) {
      others.push_back(StartThread("other", [&] { stop.Wait(std::chrono::hours(1'000'000)); }));
    }
    for (auto _ : state) never.Wait(Milliseconds(1));
    stop.Set();
    for (const auto& other : others) other->Join();
    return 0;
  });
}
BENCHMARK(BM_DeadlineWait)->Arg(0)->Arg(16)->Arg(256);

void BM_Lock(benchmark::State& state) {
  RunUnderTimeBase(OptionsOf(state.range(0)), [&] {
    RecursiveLock lock("lock", 10);
    for (auto _ : state) {
      const RecursiveGuard guard(lock);
      benchmark::ClobberMemory();
    }
    return 0;
  });
}
BENCHMARK(BM_Lock)->Apply(EachBase);

void BM_StartAndJoin(benchmark::State& state) {
  RunUnderTimeBase(OptionsOf(state.range(0)), [&] {
    int64_t rounds = 0;
    for (auto _ : state) {
      StartThread("short", [] {})->Join();
      if (++rounds % 10'000 == 0) Sleep(Milliseconds(1));
    }
    return 0;
  });
}
BENCHMARK(BM_StartAndJoin)->Apply(EachBase);

}  // namespace
}  // namespace platform

BENCHMARK_MAIN();
