#include "host/core/serial_port.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "host/core/serial_device.h"
#include "platform/log.h"

namespace torvell {
namespace {

constexpr int kReopenMilliseconds = 1000;
// A device takes a whole frame at once, so a write only waits this long on a line that is stuck.
constexpr int kWriteMilliseconds = 200;

}  // namespace

SerialPort::SerialPort(std::string device, int rate, LineEvents events)
    : device_(std::move(device)), rate_(rate), events_(std::move(events)) {}

SerialPort::~SerialPort() { CloseSerialDevice(handle_); }

std::shared_ptr<SerialPort> SerialPort::Open(const std::string& portName, const std::string& device,
                                             int rate, LineEvents events, std::string& failure) {
  FileHandle handle = OpenSerialDevice(device, rate, failure);
  if (!handle.IsOpen()) return nullptr;
  std::shared_ptr<SerialPort> port(new SerialPort(device, rate, std::move(events)));
  port->Replace(std::move(handle));
  if (!port->MakeWakePipe()) {
    failure = "No more files can be opened; end other programs and try again.";
    return nullptr;
  }
  try {
    port->thread_ = platform::StartThread("port " + portName, [port] { port->Main(); });
  } catch (const std::system_error&) {
    failure = "No thread can be started for the line; end other programs and try again.";
    return nullptr;
  }
  return port;
}

bool SerialPort::MakeWakePipe() {
  std::array<int, 2> ends{-1, -1};
  if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return false;
  wakeRead_ = FileHandle(ends[0]);
  wakeWrite_ = FileHandle(ends[1]);
  return true;
}

void SerialPort::Write(std::span<const uint8_t> bytes) {
  // The lock is held over this short wait so that the device can't be replaced within a frame, and
  // frames of two threads don't mix. The line's thread takes the lock only briefly.
  platform::PlainGuard guard(lock_);
  while (handle_.IsOpen() && !bytes.empty()) {
    const ssize_t written = write(handle_.get(), bytes.data(), bytes.size());
    if (written > 0) {
      bytes = bytes.subspan(static_cast<size_t>(written));
      continue;
    }
    if (written < 0 && errno == EINTR) continue;
    // The line is broken. Its thread notices that too and reopens the device.
    if (written < 0 && errno != EAGAIN) return;
    pollfd wait = {handle_.get(), POLLOUT, 0};
    if (poll(&wait, 1, kWriteMilliseconds) <= 0) return;
  }
}

void SerialPort::Purge() {
  platform::PlainGuard guard(lock_);
  if (handle_.IsOpen()) tcflush(handle_.get(), TCIFLUSH);
}

void SerialPort::Shut() {
  {
    platform::PlainGuard guard(lock_);
    ending_ = true;
  }
  // A full pipe wakes the thread too.
  if (!WriteAll(wakeWrite_.get(), "x") && errno != EAGAIN) {
    platform::Log(platform::LogLevel::Error, "The line's thread could not be woken.");
  }
}

void SerialPort::WaitShut() {
  {
    platform::PlainGuard guard(lock_);
    if (threadId_ == platform::CurrentThreadId()) return;
  }
  thread_->Join();
}

void SerialPort::Main() {
  {
    platform::PlainGuard guard(lock_);
    threadId_ = platform::CurrentThreadId();
  }
  std::string reason;
  while (ReadUntilBroken(reason)) {
    Replace(FileHandle());
    events_.broken(reason);
    if (!Reopen()) break;
    events_.restored();
  }
  Replace(FileHandle());
}

// Returns true when the line has broken, false when it is to end.
bool SerialPort::ReadUntilBroken(std::string& reason) {
  int device = -1;
  {
    platform::PlainGuard guard(lock_);
    device = handle_.get();
  }
  for (;;) {
    std::array<pollfd, 2> wait = {pollfd{device, POLLIN, 0}, pollfd{wakeRead_.get(), POLLIN, 0}};
    if (poll(wait.data(), wait.size(), -1) < 0 && errno != EINTR) {
      reason = std::strerror(errno);
      return true;
    }
    if (wait[1].revents != 0 && TakeWake()) return false;
    if ((wait[0].revents & POLLIN) != 0) {
      if (!Deliver(reason)) return true;
    } else if (wait[0].revents != 0) {
      reason = "the device is gone";
      return true;
    }
  }
}

// Passes on what has arrived; returns false if the line has broken.
bool SerialPort::Deliver(std::string& reason) {
  int device = -1;
  {
    platform::PlainGuard guard(lock_);
    device = handle_.get();
  }
  std::array<uint8_t, 4096> bytes;
  const ssize_t count = read(device, bytes.data(), bytes.size());
  if (count > 0) {
    const std::span<const uint8_t> chunk(bytes.data(), static_cast<size_t>(count));
    watchers_.ForEach([&](rvx::PortWatcher& watcher) { watcher.Receive(chunk); });
    return true;
  }
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return true;
  reason = count == 0 ? "the device is gone" : std::strerror(errno);
  return false;
}

// Returns true when the device is open again, false when the line is to end.
bool SerialPort::Reopen() {
  for (;;) {
    if (WaitForEnd(kReopenMilliseconds)) return false;
    std::string failure;
    FileHandle handle = OpenSerialDevice(device_, rate_, failure);
    if (!handle.IsOpen()) continue;
    Replace(std::move(handle));
    return true;
  }
}

void SerialPort::Replace(FileHandle device) {
  platform::PlainGuard guard(lock_);
  CloseSerialDevice(handle_);
  handle_ = std::move(device);
}

bool SerialPort::WaitForEnd(int milliseconds) {
  pollfd wait = {wakeRead_.get(), POLLIN, 0};
  return poll(&wait, 1, milliseconds) > 0 && TakeWake();
}

bool SerialPort::TakeWake() {
  std::array<char, 64> bytes;
  while (read(wakeRead_.get(), bytes.data(), bytes.size()) > 0) {
  }
  platform::PlainGuard guard(lock_);
  return ending_;
}

}  // namespace torvell
