#include "tests/simulation/run.h"

#include <fmt/format.h>

#include "platform/guid.h"
#include "tests/simulation/world.h"

namespace rvx::soak {

std::string RepeatCommand(uint64_t seed, const RunOptions& options) {
  std::string command = fmt::format("soak --seed {} --profile {}", seed,
                                    options.profile == Profile::Short ? "short" : "tray");
  for (const Fault fault : options.without) {
    command += fmt::format(" --without {}", KindOf(fault).name);
  }
  if (options.taskSwitch == platform::TaskSwitch::Threads) command += " --threads";
  return command;
}

void RunSeed(uint64_t seed, const RunOptions& options, RunPage& page) {
  page.Begin(seed);
  const Scenario scenario = DrawScenario(seed, options.profile, options.without);
  platform::TimeBaseOptions base = platform::DrawTimeBaseOptions(seed);
  base.virtualTime.stalls = scenario.rates.Has(Fault::Stalls);
  base.virtualTime.lateWakeUps = scenario.rates.Has(Fault::LateWakeups);
  base.virtualTime.spuriousWakeUps = scenario.rates.Has(Fault::SpuriousWakeups);
  base.virtualTime.repeatCommand = RepeatCommand(seed, options);
  base.taskSwitch = options.taskSwitch;
  base.startOfClock = platform::Date(2026, 1, 5, 8, 0, 0);
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
