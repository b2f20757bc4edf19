// Serial lines, played by pseudo-terminals. Each wait ends when its event has happened; only a
// failing test reaches the limit.
#include "host/core/serial_port.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include "host/core/serial_device.h"
#include "tests/host/core/fake_instrument.h"
#include "tests/host/core/temp_folder.h"

namespace torvell {
namespace {

constexpr platform::Milliseconds kLimit{20000};

// The other end of a line.
class Controller {
 public:
  Controller() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (grantpt(master_.get()) != 0 || unlockpt(master_.get()) != 0) ADD_FAILURE() << "no pty";
    device_ = ptsname(master_.get());
  }
  const std::string& device() const { return device_; }
  void Send(const std::string& bytes) { ASSERT_TRUE(WriteAll(master_.get(), bytes)); }
  // Waits for this many bytes and returns them.
  std::string Expect(size_t count) {
    std::string bytes;
    while (bytes.size() < count) {
      pollfd wait = {master_.get(), POLLIN, 0};
      if (poll(&wait, 1, static_cast<int>(kLimit.count())) <= 0) break;
      char chunk[256];
      const ssize_t got = read(master_.get(), chunk, std::min(sizeof(chunk), count - bytes.size()));
      if (got <= 0) break;
      bytes.append(chunk, static_cast<size_t>(got));
    }
    return bytes;
  }
  void HangUp() { master_.Close(); }

 private:
  FileHandle master_;
  std::string device_;
};

class Watcher : public rvx::PortWatcher {
 public:
  void Receive(std::span<const uint8_t> bytes) override {
    {
      platform::PlainGuard guard(lock_);
      text_.append(bytes.begin(), bytes.end());
    }
    if (onReceive) onReceive();
    arrived_.Set();
  }
  // Waits until the text has arrived, and removes it.
  bool WaitFor(const std::string& expected) {
    const auto deadline = platform::Deadline::After(kLimit);
    for (;;) {
      {
        platform::PlainGuard guard(lock_);
        if (text_ == expected) {
          text_.clear();
          return true;
        }
      }
      if (!arrived_.Wait(deadline)) return false;
    }
  }
  std::string Text() {
    platform::PlainGuard guard(lock_);
    return text_;
  }
  std::function<void()> onReceive;

 private:
  platform::PlainLock lock_{"test watcher", platform::kLeafRank};
  platform::Event arrived_{"bytes arrived"};
  std::string text_ GUARDED_BY(lock_);
};

std::span<const uint8_t> Bytes(const std::string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

class SerialPortTest : public testing::Test {
 protected:
  PortDirectory& ports() { return host_->ports(); }

  TempFolder folder_;
  std::unique_ptr<Host> host_ = OpenHost(folder_);
  Controller controller_;
  Watcher first_, second_;
};

TEST_F(SerialPortTest, TwoWatchersHearTheLineAndLeaveOneByOne) {
  ports().SetMapping("COM1", controller_.device());
  rvx::Port* port = ports().OpenPort("COM1", &first_);
  ASSERT_NE(port, nullptr) << ports().LastFailure("COM1");
  ASSERT_EQ(ports().OpenPort("COM1", &second_), port);
  EXPECT_NE(ports().IsPortInUse("COM1"), 0);

  // The line is raw: no byte is added, converted, or held back until a line is full.
  const std::string bytes("-0ST\x01\x03\x11\x13\x7f\0\n\r", 12);
  controller_.Send(bytes);
  EXPECT_TRUE(first_.WaitFor(bytes));
  EXPECT_TRUE(second_.WaitFor(bytes));
  port->Write(Bytes(bytes));
  EXPECT_EQ(controller_.Expect(bytes.size()), bytes);

  ports().ClosePort("COM1", &first_);
  controller_.Send("more");
  EXPECT_TRUE(second_.WaitFor("more"));
  EXPECT_EQ(first_.Text(), "");
  ports().ClosePort("COM1", &second_);
  EXPECT_EQ(ports().IsPortInUse("COM1"), 0);
  // The device can be opened again at once.
  EXPECT_EQ(ports().OpenPort("COM1", &first_) != nullptr, true) << ports().LastFailure("COM1");
  ports().ClosePort("COM1", &first_);
}

TEST_F(SerialPortTest, AWatcherMayLeaveFromInsideItsCall) {
  ports().SetMapping("COM1", controller_.device());
  ASSERT_NE(ports().OpenPort("COM1", &first_), nullptr);
  first_.onReceive = [&] { ports().ClosePort("COM1", &first_); };
  controller_.Send("x");
  EXPECT_TRUE(first_.WaitFor("x"));
  ASSERT_NE(ports().OpenPort("COM1", &second_), nullptr) << ports().LastFailure("COM1");
  controller_.Send("y");
  EXPECT_TRUE(second_.WaitFor("y"));
  EXPECT_EQ(first_.Text(), "");
  ports().ClosePort("COM1", &second_);
}

TEST_F(SerialPortTest, ClosingWaitsForACallInProgress) {
  ports().SetMapping("COM1", controller_.device());
  platform::Event inside("inside"), leave("leave");
  std::atomic<bool> isInside{false};
  first_.onReceive = [&] {
    isInside = true;
    inside.Set();
    leave.Wait(kLimit);
    isInside = false;
  };
  ASSERT_NE(ports().OpenPort("COM1", &first_), nullptr);
  controller_.Send("x");
  ASSERT_TRUE(inside.Wait(kLimit));
  const auto closer = platform::StartThread("closer", [&] {
    leave.Set();
    ports().ClosePort("COM1", &first_);
    EXPECT_FALSE(isInside);
  });
  closer->Join();
}

TEST_F(SerialPortTest, OpeningFailuresSayWhy) {
  std::string failure;
  EXPECT_FALSE(OpenSerialDevice(folder_ / "none", 9600, failure).IsOpen());
  EXPECT_NE(failure.find("does not exist"), std::string::npos) << failure;
  std::ofstream(folder_ / "file") << "x";
  EXPECT_FALSE(OpenSerialDevice(folder_ / "file", 9600, failure).IsOpen());
  EXPECT_NE(failure.find("no serial device"), std::string::npos) << failure;

  FileHandle held = OpenSerialDevice(controller_.device(), 9600, failure);
  ASSERT_TRUE(held.IsOpen()) << failure;
  EXPECT_FALSE(OpenSerialDevice(controller_.device(), 9600, failure).IsOpen());
  EXPECT_NE(failure.find("held by another program"), std::string::npos) << failure;
  CloseSerialDevice(held);
  held = OpenSerialDevice(controller_.device(), 19200, failure);
  ASSERT_TRUE(held.IsOpen()) << failure;
  struct termios settings = {};
  ASSERT_EQ(tcgetattr(held.get(), &settings), 0);
  EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B19200));
  EXPECT_EQ(settings.c_cflag & (CSIZE | PARENB | CSTOPB | CRTSCTS), static_cast<tcflag_t>(CS8));
  EXPECT_EQ(settings.c_lflag & (ICANON | ECHO | ISIG), 0u);
  EXPECT_EQ(settings.c_iflag & (ICRNL | IXON | ISTRIP), 0u);
}

TEST_F(SerialPortTest, WithoutRightsTheGroupIsNamed) {
  if (geteuid() != 0) GTEST_SKIP() << "needs another user to be without rights";
  ASSERT_EQ(chmod(controller_.device().c_str(), 0600), 0);
  ASSERT_EQ(seteuid(65534), 0);
  std::string failure;
  const bool open = OpenSerialDevice(controller_.device(), 9600, failure).IsOpen();
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_FALSE(open);
  EXPECT_NE(failure.find("belongs to the group"), std::string::npos) << failure;
}

// Waits for the next report and keeps it.
class Reports : public ErrorListener {
 public:
  void ErrorReported(const ErrorReport& report) override {
    {
      platform::PlainGuard guard(lock_);
      reports_.push_back(report);
    }
    arrived_.Set();
  }
  bool WaitForCount(size_t count) {
    const auto deadline = platform::Deadline::After(kLimit);
    while (All().size() < count) {
      if (!arrived_.Wait(deadline)) return false;
    }
    return true;
  }
  std::vector<ErrorReport> All() {
    platform::PlainGuard guard(lock_);
    return reports_;
  }

 private:
  platform::PlainLock lock_{"test reports", platform::kLeafRank};
  platform::Event arrived_{"report arrived"};
  std::vector<ErrorReport> reports_ GUARDED_BY(lock_);
};

TEST_F(SerialPortTest, ABrokenLineIsToldOncePausesTheTrayAndComesBackByItself) {
  FakeInstrument& onLine = Adopt(*host_, "COM1");
  FakeInstrument& elsewhere = Adopt(*host_, "COM2");
  onLine.active = elsewhere.active = true;
  Reports reports;
  host_->errors().AddListener(&reports);
  // The stable name of a device that comes back under another device name.
  const std::string link = folder_ / "by-id";
  std::filesystem::create_symlink(controller_.device(), link);
  ports().SetMapping("COM1", link);
  rvx::Port* port = ports().OpenPort("COM1", &first_);
  ASSERT_NE(port, nullptr) << ports().LastFailure("COM1");

  std::filesystem::remove(link);
  controller_.HangUp();
  ASSERT_TRUE(reports.WaitForCount(1));
  EXPECT_EQ(reports.All()[0].source, "port COM1");
  EXPECT_EQ(reports.All()[0].kind, 1);
  EXPECT_EQ(reports.All()[0].instrument, &onLine);
  EXPECT_NE(ports().LastFailure("COM1"), "");
  port->Write(Bytes("lost"));  // no effect, and no failure

  Controller back;
  std::filesystem::create_symlink(back.device(), link);
  ASSERT_TRUE(reports.WaitForCount(2));
  EXPECT_EQ(reports.All()[1].kind, 0);
  EXPECT_EQ(ports().LastFailure("COM1"), "");
  back.Send("hello");
  EXPECT_TRUE(first_.WaitFor("hello"));
  port->Write(Bytes("answer"));
  EXPECT_EQ(back.Expect(6), "answer");
  EXPECT_EQ(onLine.pauses, 1) << "behind the first report, and nothing else";
  EXPECT_EQ(elsewhere.pauses, 0);
  EXPECT_EQ(reports.All().size(), 2u);

  ports().ClosePort("COM1", &first_);
  host_->errors().RemoveListener(&reports);
  EXPECT_EQ(host_->errors().Last(0).size(), 2u);
}

TEST_F(SerialPortTest, ALineThatIsBrokenCanBeClosedAndTheHostEnds) {
  Reports reports;
  host_->errors().AddListener(&reports);
  ports().SetMapping("COM1", controller_.device());
  ASSERT_NE(ports().OpenPort("COM1", &first_), nullptr);
  controller_.HangUp();
  ASSERT_TRUE(reports.WaitForCount(1));
  host_->errors().RemoveListener(&reports);
  ports().ClosePort("COM1", &first_);
  ports().ClearMapping("COM1");  // the next device may get this one's name
  // A port that is still open closes with the host.
  Controller other;
  ports().SetMapping("COM2", other.device());
  ASSERT_NE(ports().OpenPort("COM2", &second_), nullptr);
  host_.reset();
}

}  // namespace
}  // namespace torvell
