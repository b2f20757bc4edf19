// How a conversation ends, in good order and otherwise.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "platform/thread.h"
#include "tests/instrument/instrument_fixture.h"

namespace rvx {
namespace {

// Closing waits some seconds for the last commands. A thread that is held up for longer (here by
// its own port) must not take the abort with it, or the instrument goes on alone.
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
      // On a silent line these take the time that closing waits.
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

// The thread that sends is the one that asks for the end: the abort goes out all the same.
TEST(ClosingDeathTest, DestroyedFromTheReportOfASilenceItAborts) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(RunVirtual([] {
                 InstrumentBench bench;
                 bench.port.SetScript([](FakePort&, std::span<const uint8_t> bytes) {
                   if (bytes.size() > 4 && bytes[3] == 'A' && bytes[4] == 'B') {
                     std::fputs("aborted\n", stderr);
                   }
                 });
                 bench.host.instruments.onError = [&](const ActionErrorRecord&) {
                   bench.instrument.reset();
                 };
                 platform::Sleep(1min);
               }),
               "aborted.*destroyed from inside a call that it makes");
}

// Likewise the thread that reads replies: none can come any more, so what stands in the queue
// before the abort would be sent at every time-out, a start among it.
TEST(ClosingDeathTest, DestroyedWhileAReplyIsReadItAbortsAndStartsNothing) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(RunVirtual([] {
                 InstrumentBench bench;
                 ASSERT_TRUE(bench.WaitForStatus(2));
                 bench.controller.OnCommand([](const std::string& tag, const std::string&) {
                   std::fputs((tag + " ").c_str(), stderr);
                 });
                 bench.host.instruments.onError = [&](const ActionErrorRecord&) {
                   TestRecord test;
                   for (int i = 0; i < 3; ++i) bench.instrument->StartTest(i, 0, test, nullptr);
                   bench.instrument.reset();
                 };
                 bench.controller.SetByte(12, 0x06);  // steppers not initialised
                 platform::Sleep(1min);
               }),
               "^(ST )?AB [^S]*destroyed from inside a call that it makes");
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
