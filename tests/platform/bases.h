// Runs a test under each time base: threads, locks and events must behave the same under all of
// them.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "platform/time_base.h"

namespace platform {

// A time base as the parameter of a test.
struct BaseCase {
  const char* name;
  TimeBaseOptions options;
};

inline void PrintTo(const BaseCase& base, std::ostream* out) { *out << base.name; }

inline BaseCase RealCase() { return {"Real", {}}; }

inline BaseCase VirtualCase(TaskSwitch taskSwitch, uint64_t seed = 1) {
  TimeBaseOptions options;
  options.kind = TimeBaseKind::Virtual;
  options.taskSwitch = taskSwitch;
  options.seed = seed;
  return {taskSwitch == TaskSwitch::Fibers ? "Fibers" : "Threads", options};
}

// A test that runs once under each base.
class EachBase : public testing::TestWithParam<BaseCase> {
 protected:
  static void Run(const std::function<void()>& program) {
    RunUnderTimeBase(GetParam().options, [&] {
      program();
      return 0;
    });
  }
};

// Runs a program under virtual time with fibers.
inline void RunVirtual(uint64_t seed, const std::function<void()>& program) {
  RunUnderTimeBase(VirtualCase(TaskSwitch::Fibers, seed).options, [&] {
    program();
    return 0;
  });
}

// The real base, and virtual time with fibers and with threads.
inline auto AllBases() {
  return testing::Values(RealCase(), VirtualCase(TaskSwitch::Fibers),
                         VirtualCase(TaskSwitch::Threads));
}

inline std::string NameOfBase(const testing::TestParamInfo<BaseCase>& info) {
  return info.param.name;
}

inline std::string NameOfSwitch(const testing::TestParamInfo<TaskSwitch>& info) {
  return info.param == TaskSwitch::Fibers ? "Fibers" : "Threads";
}

}  // namespace platform
