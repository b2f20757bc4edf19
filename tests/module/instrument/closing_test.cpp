// How a conversation ends, in good order and otherwise.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>

#include "platform/thread.h"
#include "tests/module/instrument/instrument_fixture.h"

namespace rvx {
namespace {

// Closing waits some seconds for the last commands. If a thread is held up for longer (here by its
// own port), the abort must still be sent, or the instrument goes on unattended.
TEST(ClosingTest, AnAbortGoesOutHoweverLateTheThreadIs) {
  for (const bool answers : {true, false}) {
    RunVirtual([&] {
      InstrumentBench bench;
      ASSERT_TRUE(bench.WaitForStatus(2));
      bench.controller.SetSilent(!answers);
      bench.controller.OnCommand([](const std::string& tag, const std::string&) {
        if (tag == "AI") platform::Sleep(20s);
      });
      bench.instrument->SetInjection(true, nullptr);
      ASSERT_TRUE(bench.port.WaitForWritten("CAI", 1, 10s));
      // On a silent line these commands take all the time that closing waits.
      for (int i = 0; i < 2; ++i) bench.instrument->SetInjection(false, nullptr);
      bench.instrument->SendAbort(nullptr);
      bench.instrument->SetInjection(false, nullptr);
      bench.instrument.reset();
      const std::vector<std::string> commands = bench.controller.commands();
      EXPECT_EQ(std::count(commands.begin(), commands.end(), "0CAB"), 1) << answers;
    });
  }
}

using ClosingDeathTest = testing::Test;

// A bench whose host calls `before` and then destroys the instrument inside its first error report.
struct DestroyingBench : InstrumentBench {
  explicit DestroyingBench(const std::function<void(C_RVX&)>& before) {
    instrument.reset();
    // Set while no instrument's thread can use it.
    host.instruments.onError = [this, before](const ActionErrorRecord&) {
      before(*instrument);
      instrument.reset();
    };
    port.SetScript([this](FakePort& line, std::span<const uint8_t> bytes) {
      const std::string frame(bytes.begin(), bytes.end());
      if (frame[2] == 'C') std::fputs((frame.substr(3, 2) + " ").c_str(), stderr);
      if (answers) line.Reply(StatusReply('0', status));
    });
    instrument = std::make_unique<C_RVX>("COM1", 0, kModelFour, PlainActions());
    // From here on only the thread that destroys the instrument uses `instrument`.
    EXPECT_TRUE(port.WaitForWritten("QST", 3, 10s));
  }

  std::atomic<bool> answers{true};
  StatusBytes status{};
};

// The thread that sends commands is itself the one that destroys the instrument. The abort is sent
// all the same.
TEST(ClosingDeathTest, DestroyedFromTheReportOfASilenceItAborts) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(RunVirtual([] {
                 DestroyingBench bench([](C_RVX&) {});
                 bench.answers = false;
                 platform::Sleep(1min);
               }),
               "AB .*destroyed from inside a call that it makes");
}

// The thread that reads replies destroys the instrument, so no reply can come any more. Commands in
// the queue before the abort, starts among them, would be sent one at each time-out.
TEST(ClosingDeathTest, DestroyedWhileAReplyIsReadItAbortsAndStartsNothing) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(RunVirtual([] {
                 DestroyingBench bench([](C_RVX& instrument) {
                   TestRecord test;
                   for (int i = 0; i < 3; ++i) instrument.StartTest(i, 0, test, nullptr);
                 });
                 StatusBytes uninitialised = bench.status;
                 uninitialised[12] = 0x06;
                 bench.port.Reply(StatusReply('0', uninitialised));
                 platform::Sleep(1min);
               }),
               "TC (ST )?AB [^S]*destroyed from inside a call that it makes");
}

TEST(ClosingTest, WithoutAThreadAnInstrumentIsSilentAndCloses) {
  RunVirtual([] {
    InstrumentBench bench;
    bench.instrument.reset();
    const size_t before = bench.port.written().size();
    platform::FailThreadStarts(1);
    bench.instrument = std::make_unique<C_RVX>("COM1", 0, kModelFour, PlainActions());
    bench.instrument->SetInjection(true, nullptr);
    bench.instrument.reset();
    EXPECT_EQ(bench.port.written().size(), before);
  });
}

}  // namespace
}  // namespace rvx
