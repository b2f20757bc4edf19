#include "bench/measure.h"

#include <sched.h>
#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace bench {
namespace {

// Set by PinToOneCpu.
std::vector<int> othersToKeepBusy;

std::vector<int> AllowedCpus() {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof(allowed), &allowed) != 0) Fail("the CPUs can't be asked for");
  std::vector<int> cpus;
  for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (CPU_ISSET(static_cast<size_t>(cpu), &allowed)) cpus.push_back(cpu);
  }
  return cpus;
}

// The calling thread, and those that it starts from now on.
void StayOn(int cpu) {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<size_t>(cpu), &one);
  if (sched_setaffinity(0, sizeof(one), &one) != 0) Fail("no thread can be kept on one CPU");
}

}  // namespace

WorkFolder::WorkFolder(const std::string& parent) {
  path_ = (std::filesystem::path(parent) / "torvell-bench.XXXXXX").string();
  if (mkdtemp(path_.data()) == nullptr) Fail("no folder can be made in " + parent);
}

WorkFolder::~WorkFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

double Now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double Quantile(std::vector<double> values, double share) {
  if (values.empty()) Fail("a series without a value");
  std::sort(values.begin(), values.end());
  const double rank = std::ceil(share * static_cast<double>(values.size()));
  return values[static_cast<size_t>(std::max(rank, 1.0)) - 1];
}

void PinToOneCpu() {
  const std::vector<int> cpus = AllowedCpus();
  othersToKeepBusy.assign(cpus.begin() + 1, cpus.end());
  StayOn(cpus.front());
}

BusyOthers::BusyOthers() {
  for (const int cpu : othersToKeepBusy) {
    threads_.emplace_back([this, cpu] {
      StayOn(cpu);
      while (!stop_.load(std::memory_order_relaxed)) {
      }
    });
  }
}

BusyOthers::~BusyOthers() {
  stop_ = true;
  for (std::thread& thread : threads_) thread.join();
}

void Report::Print() const {
  std::printf("{");
  const char* separator = "";
  for (const auto& [name, value] : figures_) {
    std::printf("%s\"%s\": %.9g", separator, name.c_str(), value);
    separator = ", ";
  }
  std::printf("}\n");
}

void Fail(const std::string& message) {
  std::fprintf(stderr, "error: %s\n", message.c_str());
  std::exit(1);
}

}  // namespace bench
