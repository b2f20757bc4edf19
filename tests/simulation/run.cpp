#include "tests/simulation/run.h"

#include "platform/guid.h"
#include "tests/simulation/world.h"

namespace rvx::soak {

void RunSeed(uint64_t seed, const RunOptions& options, RunPage& page) {
  page.Begin(seed);
  const Scenario scenario = DrawScenario(seed, options.profile, options.without);
  platform::TimeBaseOptions base;
  base.kind = platform::TimeBaseKind::Virtual;
  base.seed = seed;
  base.taskSwitch = options.taskSwitch;
  base.startOfClock = platform::Date(2026, 1, 5, 8, 0, 0);
  base.startTick = scenario.startTick;
  platform::SeedGuids(seed, 0);
  RunFigures figures;
  platform::RunUnderTimeBase(base, [&] {
    {
      World world(scenario, page);
      world.Run();
      figures.samples = world.stored();
    }
    const platform::TimeBaseFigures time = platform::GetTimeBaseFigures();
    figures.hash = time.traceHash;
    figures.switches = time.switches;
    figures.steps = time.steps;
    figures.simulated = static_cast<uint64_t>(time.elapsed.count());
    return 0;
  });
  page.Done(figures);
}

}  // namespace rvx::soak
