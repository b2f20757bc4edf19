// The fake host carries the tests of other floors, so what they rely on is tested itself.
#include "tests/support/fake_host.h"

#include <gtest/gtest.h>

#include "platform/thread.h"
#include "tests/support/fake_controller.h"
#include "tests/support/virtual_run.h"

namespace rvx {
namespace {

using platform::Milliseconds;

std::span<const uint8_t> AsBytes(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

// Keeps what it receives and when.
class Watcher : public PortWatcher {
 public:
  void Receive(std::span<const uint8_t> bytes) override {
    {
      platform::PlainGuard guard(lock_);
      text_.append(bytes.begin(), bytes.end());
    }
    if (wait != Milliseconds(0)) platform::Sleep(wait);
    {
      platform::PlainGuard guard(lock_);
      moments_.push_back(platform::MonotonicTime());
    }
    received.Set();
  }
  std::string Text() {
    platform::PlainGuard guard(lock_);
    return text_;
  }
  // When each call ended.
  std::vector<platform::Microseconds> Moments() {
    platform::PlainGuard guard(lock_);
    return moments_;
  }
  void Clear() {
    platform::PlainGuard guard(lock_);
    text_.clear();
  }

  Milliseconds wait{0};  // constant once the port is open
  platform::Event received{"watcher received"};

 private:
  platform::PlainLock lock_{"watcher", platform::kLeafRank};
  std::string text_ GUARDED_BY(lock_);
  std::vector<platform::Microseconds> moments_ GUARDED_BY(lock_);
};

TEST(FakePort, RepliesComeInOrderWhenTheyAreDue) {
  RunVirtual([] {
    FakeHost host;
    Watcher watcher;
    FakePort& port = host.ports.Add("COM1");
    ASSERT_EQ(GetPortManager()->OpenPort("COM1", &watcher), &port);
    EXPECT_EQ(GetPortManager()->OpenPort("COM2", &watcher), nullptr);
    const auto start = platform::MonotonicTime();
    port.Reply("late ", Milliseconds(50));
    port.Reply("later", Milliseconds(10));
    while (watcher.Text() != "late later") ASSERT_TRUE(watcher.received.Wait(Milliseconds(1000)));
    EXPECT_GE(watcher.Moments().at(0) - start, Milliseconds(50));
    GetPortManager()->ClosePort("COM1", &watcher);
    EXPECT_FALSE(port.IsOpen());
  });
}

TEST(FakePort, ClosedWatcherIsNotBeingCalled) {
  RunVirtual([] {
    FakeHost host;
    Watcher slow;
    Watcher other;
    slow.wait = Milliseconds(500);
    FakePort& port = host.ports.Add("COM1");
    GetPortManager()->OpenPort("COM1", &slow);
    GetPortManager()->OpenPort("COM1", &other);
    port.Reply("x");
    platform::Sleep(Milliseconds(100));
    EXPECT_EQ(slow.Text(), "x");
    EXPECT_TRUE(slow.Moments().empty()) << "still inside";
    GetPortManager()->ClosePort("COM1", &slow);
    EXPECT_EQ(slow.Moments().size(), 1u) << "the close waited for the call's end";
    port.Reply("y");
    ASSERT_TRUE(other.received.Wait(Milliseconds(1000)));
    while (other.Text() != "xy") ASSERT_TRUE(other.received.Wait(Milliseconds(1000)));
    EXPECT_EQ(slow.Text(), "x");
    GetPortManager()->ClosePort("COM1", &other);
  });
}

TEST(FakeController, AnswersRefusesAndKeepsSilent) {
  RunVirtual([] {
    FakeHost host;
    Watcher watcher;
    FakePort& port = host.ports.Add("COM1");
    FakeController controller(port, 11);
    GetPortManager()->OpenPort("COM1", &watcher);
    const auto ask = [&](std::string_view frame) {
      watcher.Clear();
      port.Write(AsBytes(frame));
      return watcher.received.Wait(Milliseconds(1000)) ? watcher.Text() : "";
    };
    controller.SetWord(0, 0x1234);
    EXPECT_EQ(ask("/BQST\r"), "-BQST1234E200FFFFE0002000000000000000000000\r");
    EXPECT_EQ(ask("/BQMT\r"), "-BQMTRVX 4102.17FAKE-1\r");
    EXPECT_EQ(ask("/BQTR\r"), "-BQTR0000\r");
    controller.Refuse("MP", 0x41, 1);
    EXPECT_EQ(ask("/BCMP1F\r"), "-BQST1234E200FFFFE0002000000000000000414D50\r");
    EXPECT_EQ(ask("/BCMP01\r"), "-BQST1234E200FFFFE0002000000000000000004D50\r");
    EXPECT_EQ(ask("/0QST\r"), "") << "another's address";
    controller.SetSilent(true);
    EXPECT_EQ(ask("/BQST\r"), "");
    EXPECT_EQ(controller.commands(), (std::vector<std::string>{"BCMP1F", "BCMP01"}));
    GetPortManager()->ClosePort("COM1", &watcher);
  });
}

TEST(FakeArchives, FailAsPlanned) {
  FakeHost host;
  host.samples.storeFailures.FailNext(1);
  try {
    GetSampleArchive()->StoreSample(Sample());
    FAIL() << "stored";
  } catch (ArchiveException* error) {
    delete error;
  }
  GetSampleArchive()->StoreSample(Sample());
  EXPECT_EQ(host.samples.samples().size(), 1u);
}

TEST(FakeHost, WaitsForErrors) {
  RunVirtual([] {
    FakeHost host;
    auto thread = platform::StartThread("reporter", [] {
      platform::Sleep(Milliseconds(300));
      ActionErrorRecord record;
      record.message = "something failed";
      ActionException error(record);
      GetInstrumentManager()->ReportError(&error);
    });
    EXPECT_FALSE(host.instruments.WaitForErrors(1, Milliseconds(100)));
    EXPECT_TRUE(host.instruments.WaitForErrors(1, Milliseconds(1000)));
    EXPECT_EQ(host.instruments.errors().at(0).message, "something failed");
    thread->Join();
  });
}

TEST(FakeHost, WithoutOneTheLibraryIsMissing) {
  try {
    GetSecurityManager();
    FAIL() << "found a host";
  } catch (InvalidException* error) {
    delete error;
  }
}

}  // namespace
}  // namespace rvx
