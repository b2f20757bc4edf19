#include "tests/simulation/sweep.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <stdexcept>
#include <utility>

#include "platform/sanitizer.h"
#include "platform/time_base.h"
#include "tests/simulation/real_archive.h"

#if defined(PLATFORM_ADDRESS_SANITIZER)
#include <sanitizer/lsan_interface.h>
#endif

namespace rvx::soak {
namespace {

// Real seconds after which a run counts as hanging in a way that the scheduler does not see.
constexpr unsigned kHangSeconds = 120;
// Bytes of a process's output that are shown: a sanitizer's report is long.
constexpr size_t kMaxOutput = 50'000;

// One child with its page and what it writes.
class Child {
 public:
  Child() : page_(RunPage::Map()), output_(memfd_create("soak", 0)) {
    if (page_ == nullptr || output_ < 0) throw std::runtime_error("no memory for a run");
  }
  ~Child() {
    RunPage::Unmap(page_);
    close(output_);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  // Starts a process that takes the seeds in their order.
  void Start(const SweepOptions& options, uint64_t first, uint64_t last) {
    first_ = first;
    last_ = last;
    page_->Begin(first);
    page_->Clear();
    if (ftruncate(output_, 0) != 0) throw std::runtime_error("no memory for a run");
    std::fflush(nullptr);
    pid_ = fork();
    if (pid_ < 0) throw std::runtime_error("no process for a run");
    if (pid_ == 0) Work(options);
  }

  pid_t pid() const { return pid_; }
  uint64_t last() const { return last_; }
  const RunPage& page() const { return *page_; }
  void Ended() { RealArchive::RemoveFolderOf(std::exchange(pid_, 0)); }

  std::string Output() const {
    std::string text(kMaxOutput, '\0');
    const ssize_t size = pread(output_, text.data(), text.size(), 0);
    text.resize(size > 0 ? static_cast<size_t>(size) : 0);
    return text;
  }

 private:
  // Checked here, so that the page records it: the check at the end of the process would only give
  // an exit code.
  void LookForLeaks() {
#if defined(PLATFORM_ADDRESS_SANITIZER)
    if (__lsan_do_recoverable_leak_check() != 0)
      page_->Break(0, "the runs have left memory behind");
#endif
  }

  [[noreturn]] void Work(const SweepOptions& options) {
    lseek(output_, 0, SEEK_SET);
    dup2(output_, STDERR_FILENO);
    for (uint64_t seed = first_; seed <= last_; ++seed) {
      alarm(kHangSeconds);
      RunSeed(seed, options.run, *page_);
      const uint64_t hash = page_->figures().hash;
      if (options.checkDeterminism) {
        RunSeed(seed, options.run, *page_);
        if (page_->figures().hash != hash) page_->Break(0, "a second run of the seed differs");
      }
      if (options.checkThreads) {
        RunOptions onThreads = options.run;
        onThreads.taskSwitch = platform::TaskSwitch::Threads;
        RunSeed(seed, onThreads, *page_);
        if (page_->figures().hash != hash) page_->Break(0, "a run of the seed on threads differs");
      }
      if (options.printHashes) std::printf("%lu %016lx\n", seed, hash);
      page_->Count();
    }
    std::fflush(stdout);
    LookForLeaks();
    std::exit(0);
  }

  RunPage* page_;
  int output_;
  pid_t pid_ = 0;
  uint64_t first_ = 0;
  uint64_t last_ = 0;
};

double ChildrenCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// The sanitizer's summary in the output; without one, the first line.
std::string LineThatSays(const std::string& output) {
  constexpr std::string_view kSummary = "SUMMARY: ";
  const size_t summary = output.find(kSummary);
  const size_t begin = summary == std::string::npos ? 0 : summary + kSummary.size();
  return output.substr(begin, output.find('\n', begin) - begin);
}

std::string ReasonOf(const Child& child, int status) {
  if (!child.page().broken().empty()) return child.page().broken();
  const std::string output = child.Output();
  if (!output.empty()) return LineThatSays(output);
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM) return "the run hangs";
  if (WIFSIGNALED(status)) return fmt::format("the process ended by signal {}", WTERMSIG(status));
  return fmt::format("the process ended with exit code {}", WEXITSTATUS(status));
}

Outcome OutcomeOf(const Child& child, int status, const SweepOptions& options) {
  Outcome outcome;
  outcome.seed = child.page().seed();
  outcome.failed = !WIFEXITED(status) || WEXITSTATUS(status) != 0;
  if (outcome.failed) outcome.what = ReasonOf(child, status);
  outcome.history = child.page().History(options.historyLines) + child.Output();
  return outcome;
}

class Sweeper {
 public:
  explicit Sweeper(const SweepOptions& options)
      : options_(options),
        children_(static_cast<size_t>(std::max(options.jobs, 1))),
        next_(options.first) {}

  SweepResult Run() {
    const platform::Microseconds begin = platform::MonotonicTime();
    const double cpu = ChildrenCpuSeconds();
    if (options_.minutes) {
      end_ = begin + platform::Microseconds(static_cast<int64_t>(*options_.minutes * 60e6));
    }
    for (Child& child : children_) StartNext(child);
    while (Child* child = AwaitOne()) Ended(*child);
    result_.seconds = static_cast<double>((platform::MonotonicTime() - begin).count()) / 1e6;
    result_.cpuSeconds = ChildrenCpuSeconds() - cpu;
    std::sort(result_.failures.begin(), result_.failures.end(),
              [](const Outcome& a, const Outcome& b) { return a.seed < b.seed; });
    return result_;
  }

 private:
  void StartNext(Child& child) {
    const bool enough = result_.failures.size() >= options_.mostFailures ||
                        (end_ && platform::MonotonicTime() > *end_);
    if (enough || next_ > options_.last) return;
    const uint64_t last = std::min(options_.last, next_ + options_.chunk - 1);
    child.Start(options_, next_, last);
    next_ = last + 1;
  }

  // The child that ended, or null if there is none left.
  Child* AwaitOne() {
    const bool any = std::any_of(children_.begin(), children_.end(),
                                 [](const Child& child) { return child.pid() != 0; });
    if (!any) return nullptr;
    const pid_t pid = waitpid(-1, &status_, 0);
    for (Child& child : children_) {
      if (child.pid() == pid) return &child;
    }
    throw std::runtime_error("a process ended that nobody started");
  }

  void Ended(Child& child) {
    child.Ended();
    const RunPage& page = child.page();
    result_.seeds += page.seeds();
    result_.sum.switches += page.sum().switches;
    result_.sum.steps += page.sum().steps;
    result_.sum.simulated += page.sum().simulated;
    result_.sum.samples += page.sum().samples;
    const Outcome outcome = OutcomeOf(child, status_, options_);
    if (!outcome.failed) {
      StartNext(child);
      return;
    }
    const uint64_t failed = outcome.seed;
    result_.failures.push_back(outcome);
    const bool enough = result_.failures.size() >= options_.mostFailures;
    if (!enough && failed < child.last()) {
      child.Start(options_, failed + 1, child.last());
    } else {
      StartNext(child);
    }
  }

  const SweepOptions& options_;
  std::deque<Child> children_;
  uint64_t next_;
  std::optional<platform::Microseconds> end_;
  int status_ = 0;
  SweepResult result_;
};

}  // namespace

SweepResult Sweep(const SweepOptions& options) { return Sweeper(options).Run(); }

Outcome RunAlone(const SweepOptions& options) {
  Child child;
  child.Start(options, options.first, options.first);
  int status = 0;
  waitpid(child.pid(), &status, 0);
  child.Ended();
  return OutcomeOf(child, status, options);
}

std::vector<Fault> FindSmallestFaults(SweepOptions& options) {
  std::vector<Fault> needed;
  const FaultRates rates =
      DrawScenario(options.first, options.run.profile, options.run.without).rates;
  for (size_t i = 0; i < kFaultCount; ++i) {
    const auto fault = static_cast<Fault>(i);
    if (!rates.Has(fault)) continue;
    SweepOptions fewer = options;
    fewer.run.without.insert(fault);
    if (RunAlone(fewer).failed) {
      options = fewer;
    } else {
      needed.push_back(fault);
    }
  }
  return needed;
}

}  // namespace rvx::soak
