// What the virtual base reports when it gives a run up.
#include <fmt/format.h>

#include <algorithm>

#include "platform/fatal.h"
#include "platform/hang_watch.h"
#include "platform/sanitizer.h"
#include "platform/virtual_base.h"

namespace platform::detail {
namespace {

std::string Seconds(Microseconds moment) {
  return fmt::format("{}.{:06} s", moment.count() / 1'000'000, moment.count() % 1'000'000);
}

}  // namespace

void VirtualBase::CheckAllEnded() const {
  if (tasks_.size() > 1) Abandon("threads left at the end of the program");
  if (!running_->held.empty()) {
    Abandon(fmt::format("the program ends while it holds \"{}\"", running_->held.last()->name));
  }
}

void VirtualBase::ReportHang() const {
  const SchedulerScope scope;
  const CallStack where =
      running_ != nullptr ? InterruptAndWalk(running_->systemThread) : CallStack();
  Abandon(fmt::format("hang: no step for {} s of real time",
                      std::chrono::duration<double>(options_.hangAfter).count()),
          &where);
}

void VirtualBase::Abandon(const std::string& headline, const CallStack* where) const {
  const SchedulerScope scope;
  std::vector<CallStack> stacks;
  for (const auto& [number, task] : tasks_) {
    if (task.get() != running_) {
      stacks.push_back(WalkFrames(task->frame));
    } else {
      stacks.push_back(where != nullptr ? *where : WalkFrames(PLATFORM_THIS_FRAME));
    }
  }
  const std::vector<std::vector<std::string>> calls = DescribeCalls(stacks);
  std::string report = "platform: " + headline + "\n" + DescribeRun();
  auto itsCalls = calls.begin();
  for (const auto& [number, task] : tasks_) {
    report += DescribeTask(*task);
    for (const std::string& call : *itsCalls) report += "    in " + call + "\n";
    ++itsCalls;
  }
  if (options_.history) report += options_.history();
  while (report.back() == '\n') report.pop_back();
  AbandonRun(report);
}

std::string VirtualBase::DescribeRun() const {
  std::string text = fmt::format("  repeat with seed {} ({}, {}", seed_,
                                 taskSwitch_ == TaskSwitch::Fibers ? "fibers" : "threads",
                                 NameOf(options_.strategy));
  if (options_.stalls) text += ", stalls";
  if (options_.lateWakeUps) text += ", late wake-ups";
  if (options_.spuriousWakeUps) text += ", spurious wake-ups";
  if (startTick_ != 0) text += fmt::format(", clock from {} ms", startTick_);
  text += ")";
  if (!options_.repeatCommand.empty()) text += ": " + options_.repeatCommand;
  return text + fmt::format("\n  virtual time {}, {} steps, trace {:016x}\n", Seconds(now_),
                            steps_.load(std::memory_order_relaxed), traceHash_);
}

std::string VirtualBase::DescribeTask(const Task& task) const {
  std::string text = fmt::format("  thread {} \"{}\": ", task.number, task.threadName);
  switch (task.state) {
    case TaskState::Running:
      text += "running";
      break;
    case TaskState::Ready:
      text += &task == running_ ? "ready, ran last" : "ready";
      break;
    case TaskState::Waiting:
      text += DescribeWait(task);
      break;
  }
  for (size_t i = 0; i < task.held.size(); ++i) {
    text += fmt::format("{} \"{}\"", i == 0 ? "; holds" : ",", task.held[i]->name);
  }
  return text + "\n";
}

std::string VirtualBase::DescribeWait(const Task& task) {
  std::string text;
  if (task.stalled) {
    text = "held up by the scheduler";
  } else if (task.wantedLock != nullptr) {
    const ThreadRecord* owner = task.wantedLock->owner.load(std::memory_order_relaxed);
    text = fmt::format("waits for lock \"{}\", owned by {}", task.wantedLock->name,
                       owner != nullptr ? fmt::format("\"{}\"", owner->threadName) : "nobody");
  } else if (task.joined != nullptr) {
    text = fmt::format("waits for the end of thread \"{}\"", task.joined->threadName);
  } else if (!task.wantedEvents.empty()) {
    text = "waits for event ";
    for (size_t i = 0; i < task.wantedEvents.size(); ++i) {
      text += fmt::format("{}\"{}\"", i == 0 ? "" : " or ", task.wantedEvents[i]->name);
    }
  } else {
    text = "sleeps";
  }
  if (!task.deadline.IsNever()) text += fmt::format(", until {}", Seconds(task.deadline.moment()));
  return text;
}

}  // namespace platform::detail
