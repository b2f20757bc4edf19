#include <boost/context/fiber.hpp>
#include <boost/context/protected_fixedsize_stack.hpp>
#include <cstddef>
#include <cstring>
#include <new>
#include <system_error>
#include <vector>

#include <cxxabi.h>

#include "platform/sanitizer.h"
#include "platform/task_switch.h"

namespace platform::detail {
namespace {

namespace ctx = boost::context;

// Enough for the deepest calls of the program (a database statement below an archive's call);
// sanitizers make frames several times as big. Only what is touched takes memory.
constexpr size_t kStackSize = kSanitized ? 1024 * 1024 : 256 * 1024;

// The C++ runtime's record of the exceptions that a thread is handling. It belongs to a task, but
// the runtime keeps one for each thread of the system.
struct ExceptionGlobals {
  void* caughtExceptions = nullptr;
  unsigned int uncaughtExceptions = 0;
};

void SwapExceptionGlobals(ExceptionGlobals& save, const ExceptionGlobals& load) {
  void* const current = __cxxabiv1::__cxa_get_globals();
  std::memcpy(&save, current, sizeof save);
  std::memcpy(current, &load, sizeof load);
}

struct FiberContext final : TaskContext {
  ctx::fiber fiber;  // where it goes on; empty while it runs
  ExceptionGlobals exceptions;
  TaskEntry entry = nullptr;
  void* argument = nullptr;
  SanitizedStack sanitized;
};

// Switches to `to`. Returns when somebody switches to `from`, which may be on another thread of the
// system if a new program runs there.
void SwitchFibers(FiberContext& from, FiberContext& to) {
  SwapExceptionGlobals(from.exceptions, to.exceptions);
  AnnounceSwitch(from.sanitized, to.sanitized);
  std::move(to.fiber).resume_with([&from](ctx::fiber&& left) {
    from.fiber = std::move(left);
    return ctx::fiber();
  });
  AnnounceArrival(from.sanitized);
}

// The stacks that no task uses at present. A stack runs one task after another, which needs no
// calls to the system and keeps memory from growing. The list is never destroyed, because the
// fibers on the stacks are in the middle of their loop.
std::vector<FiberContext*>& IdleFibers() {
  static auto* const idle = new std::vector<FiberContext*>;
  return *idle;
}

void KeepIdle(FiberContext& fiber) {
  const SchedulerScope scope;
  IdleFibers().push_back(&fiber);
}

// Null if there is none.
FiberContext* TakeIdle() {
  const SchedulerScope scope;
  auto& idle = IdleFibers();
  if (idle.empty()) return nullptr;
  FiberContext* const fiber = idle.back();
  idle.pop_back();
  return fiber;
}

// Gives up the stack of a task that is over. Returns the context that runs next.
ctx::fiber LeaveForEver(FiberContext* self, FiberContext& next) {
  SwapExceptionGlobals(self->exceptions, next.exceptions);
  AnnounceSwitch(self->sanitized, next.sanitized);
  self->sanitized.Forget();
  delete self;
  return std::move(next.fiber);
}

ctx::fiber RunTasks(FiberContext* self) {
  AnnounceArrival(self->sanitized);
  for (;;) {
    auto* next = static_cast<FiberContext*>(self->entry(self->argument));
    // To the thread sanitizer a stack is one thread: it would see no race between two tasks of it.
    if (kFindsRaces) return LeaveForEver(self, *next);
    KeepIdle(*self);
    SwitchFibers(*self, *next);
  }
}

FiberContext* MakeFiber() {
  ctx::protected_fixedsize_stack allocator(kStackSize);
  ctx::stack_context stack;
  try {
    stack = allocator.allocate();
  } catch (const std::bad_alloc&) {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again),
                            "no room for the stack of a thread");
  }
  auto* const context = new FiberContext;
  context->sanitized.Describe(static_cast<char*>(stack.sp) - stack.size, stack.size);
  context->fiber =
      ctx::fiber(std::allocator_arg, ctx::preallocated(stack.sp, stack.size, stack), allocator,
                 [context](ctx::fiber&& /*left*/) { return RunTasks(context); });
  return context;
}

class FiberSwitcher final : public TaskSwitcher {
 public:
  FiberSwitcher() {
    HaveHadTwoThreads();
    main_.sanitized.DescribeThisThread();
  }

  TaskContext* Main() override { return &main_; }

  TaskContext* Create(TaskEntry entry, void* argument) override {
    FiberContext* context = TakeIdle();
    if (context == nullptr) context = MakeFiber();
    context->entry = entry;
    context->argument = argument;
    context->exceptions = {};
    return context;
  }

  void Switch(TaskContext* from, TaskContext* to) override {
    SwitchFibers(*static_cast<FiberContext*>(from), *static_cast<FiberContext*>(to));
  }

 private:
  FiberContext main_;
};

}  // namespace

std::unique_ptr<TaskSwitcher> MakeFiberSwitcher() { return std::make_unique<FiberSwitcher>(); }

}  // namespace platform::detail
