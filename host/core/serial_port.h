// The serial line of one port: a thread reads it and reopens it when it breaks.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "host/core/file_handle.h"
#include "host/core/open_line.h"
#include "platform/thread.h"

namespace torvell {

// Called on the line's thread, without a lock held.
struct LineEvents {
  std::function<void(const std::string& reason)> broken;
  std::function<void()> restored;
};

// A line on a device. When it breaks, that is told once, what is written is dropped, and the device
// is tried again every second until it is back. Real clock only. Any thread.
class SerialPort : public OpenLine, public std::enable_shared_from_this<SerialPort> {
 public:
  // Returns null if the device can't be opened; `failure` says why. `rate` is in baud.
  static std::shared_ptr<SerialPort> Open(const std::string& portName, const std::string& device,
                                          int rate, LineEvents events, std::string& failure);
  ~SerialPort() override;

  void Write(std::span<const uint8_t> bytes) override;
  void Purge() override;
  void Shut() override;
  void WaitShut() override;

 private:
  SerialPort(std::string device, int rate, LineEvents events);
  bool MakeWakePipe();
  void Main();
  bool ReadUntilBroken(std::string& reason);
  bool Deliver(std::string& reason);
  bool Reopen();
  void Replace(FileHandle device);
  bool WaitForEnd(int milliseconds);
  bool TakeWake();

  const std::string device_;
  const int rate_;
  const LineEvents events_;
  FileHandle wakeRead_;
  FileHandle wakeWrite_;
  std::shared_ptr<platform::Thread> thread_;  // constant once Open has returned

  platform::PlainLock lock_{"serial port", kSerialPortLockRank};
  FileHandle handle_ GUARDED_BY(lock_);  // changed by the line's thread alone
  bool ending_ GUARDED_BY(lock_) = false;
  platform::ThreadId threadId_ GUARDED_BY(lock_) = 0;
};

}  // namespace torvell
