#include "platform/thread.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "platform/event.h"
#include "platform/exception.h"
#include "tests/platform/bases.h"

namespace platform {
namespace {

class ThreadTest : public EachBase {};
INSTANTIATE_TEST_SUITE_P(Bases, ThreadTest, AllBases(), NameOfBase);

TEST_P(ThreadTest, HasItsNameAndEndsForAllWhoJoin) {
  Run([] {
    EXPECT_EQ("main", CurrentThreadName());
    Event go("go");
    std::string nameSeen;
    const auto thread = StartThread(
        "a name longer than the system takes",
        [&] {
          go.Wait();
          nameSeen = CurrentThreadName();
        },
        ThreadPriority::Lowest);
    int joined = 0;
    const auto other = StartThread("other", [&] {
      thread->Join();
      EXPECT_TRUE(thread->HasEnded());
      ++joined;
    });
    EXPECT_FALSE(thread->HasEnded());
    go.Set();
    thread->Join();
    thread->Join();
    other->Join();
    EXPECT_EQ(1, joined);
    EXPECT_EQ("a name longer than the system takes", nameSeen);
    EXPECT_EQ(thread->name(), nameSeen);
  });
}

TEST_P(ThreadTest, JoinComesBehindTheRelease) {
  Run([] {
    bool released = false;
    struct Guard {
      explicit Guard(bool& flag) : released(flag) {}
      Guard(const Guard&) = delete;
      Guard& operator=(const Guard&) = delete;
      bool& released;
      ~Guard() {
        Sleep(Milliseconds(1));
        released = true;
      }
    };
    auto guard = std::make_shared<Guard>(released);
    const auto thread = StartThread("holder", [kept = std::move(guard)] {});
    thread->Join();
    EXPECT_TRUE(released);
  });
}

TEST_P(ThreadTest, MayLetGoOfItselfLast) {
  Run([] {
    Event done("done");
    std::weak_ptr<Thread> watched;
    {
      auto thread = StartThread("own", [&done] { done.Wait(); });
      watched = thread;
    }
    // The thread still runs without another owner: a thread can be joined through a weak pointer.
    if (const auto thread = watched.lock()) {
      done.Set();
      thread->Join();
    } else {
      ADD_FAILURE() << "the thread has gone while it runs";
    }
  });
}

TEST_P(ThreadTest, NumbersAreNeverUsedAgain) {
  Run([] {
    std::set<ThreadId> ids = {CurrentThreadId()};
    for (int i = 0; i < 20; ++i) {
      StartThread("short", [&] { ids.insert(CurrentThreadId()); })->Join();
    }
    EXPECT_EQ(21u, ids.size());
    EXPECT_EQ(0u, ids.count(0));
    EXPECT_EQ(1u, ids.count(CurrentThreadId()));
  });
}

TEST_P(ThreadTest, StartsFailAsOftenAsATestAsksFor) {
  Run([] {
    FailThreadStarts(2);
    EXPECT_THROW(StartThread("first", [] {}), std::system_error);
    EXPECT_THROW(StartThread("second", [] {}), std::system_error);
    bool ran = false;
    StartThread("third", [&] { ran = true; })->Join();
    EXPECT_TRUE(ran);
  });
}

class Complaint final : public CException {
 public:
  int GetErrorMessage(char* buffer, uint32_t size, uint32_t* /*helpContext*/) override {
    std::snprintf(buffer, size, "complaint from below");
    return 1;
  }
};

using ThreadDeathTest = ThreadTest;
INSTANTIATE_TEST_SUITE_P(Bases, ThreadDeathTest, AllBases(), NameOfBase);

TEST_P(ThreadDeathTest, AnEscapedExceptionEndsTheProcessWithTheThreadsName) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(Run([] { StartThread("leaky", [] { throw std::runtime_error("oil"); })->Join(); }),
               "leaves thread \"leaky\": oil");
  EXPECT_DEATH(Run([] { StartThread("leaky", [] { throw new Complaint; })->Join(); }),
               "leaves thread \"leaky\": complaint from below");
}

}  // namespace
}  // namespace platform
