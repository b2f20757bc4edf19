// Serial ports in memory, with something scripted at the other end of the line.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "boundary/host.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace rvx {

// Is on the line between the two ends and decides which bytes arrive, and when. Called without a
// lock, on the sender's thread.
class LineFilter {
 public:
  using Hear = std::function<void(std::span<const uint8_t> bytes)>;
  using Deliver = std::function<void(std::string_view bytes, platform::Milliseconds delay)>;

  virtual ~LineFilter() = default;
  // The bytes of one Write; `hear` gives them to the other end.
  virtual void FromHost(std::span<const uint8_t> bytes, const Hear& hear) = 0;
  // The bytes that the other end sends; `deliver` gives them to the watchers.
  virtual void FromInstrument(std::string_view bytes, platform::Milliseconds delay,
                              const Deliver& deliver) = 0;
};

// One port. While it is open, a thread of its own gives the watchers what the other end sends, like
// that of a real port. So a port can be opened only where threads can be started.
class FakePort : public Port {
 public:
  // What the other end does with the bytes of one Write; called on the writer's thread, without a
  // lock. It may call Reply.
  using Script = std::function<void(FakePort& port, std::span<const uint8_t> bytes)>;

  explicit FakePort(std::string name);
  ~FakePort() override;

  // --- Port
  void Write(std::span<const uint8_t> bytes) override;
  void Purge() override;  // only counted: bytes are handed over as soon as they are due

  // --- The other end and the test. Any thread.
  void SetScript(Script script);
  // Puts a filter on the line, or with null removes it; not owned. Call it between the uses of the
  // port.
  void SetFilter(LineFilter* filter) { filter_ = filter; }
  // The texts of `written` are kept unless this switches it off; a run of days would collect too
  // many.
  void KeepWritten(bool keep) { keepsWritten_ = keep; }
  // Sends bytes to the watchers, `delay` after now, in the order of the calls. Dropped if the port
  // is closed by then.
  void Reply(std::string_view bytes, platform::Milliseconds delay = platform::Milliseconds(0));
  // The texts written so far, one for each Write, CR included.
  std::vector<std::string> written();
  void ClearWritten();
  // Waits until at least `count` texts have been written that contain `part`. Returns false at the
  // deadline.
  bool WaitForWritten(std::string_view part, size_t count, platform::Milliseconds timeout);
  int purges();
  bool IsOpen();

 private:
  friend class FakePortManager;
  struct Chunk {
    platform::Microseconds due;
    std::string bytes;
  };
  void Deliver(std::string_view bytes, platform::Milliseconds delay);
  void Attach(PortWatcher* watcher);
  // Waits until the watcher is not being called, unless the caller is the port's own thread.
  void Detach(PortWatcher* watcher);
  void DeliverAll();
  void CallWatchers(const std::string& bytes);
  size_t CountWritten(std::string_view part);

  const std::string name_;
  LineFilter* filter_ = nullptr;
  bool keepsWritten_ = true;
  platform::Event changed_{"fake port changed"};
  platform::Event wrote_{"fake port written"};
  platform::Event calm_{"fake port calm", platform::Event::Mode::ManualReset};
  platform::PlainLock lock_{"fake port", 5700};
  std::shared_ptr<const Script> script_ GUARDED_BY(lock_);
  std::vector<PortWatcher*> watchers_ GUARDED_BY(lock_);
  std::deque<Chunk> chunks_ GUARDED_BY(lock_);
  std::vector<std::string> written_ GUARDED_BY(lock_);
  std::shared_ptr<platform::Thread> thread_ GUARDED_BY(lock_);
  bool stop_ GUARDED_BY(lock_) = false;
  bool delivering_ GUARDED_BY(lock_) = false;
  platform::ThreadId deliverer_ GUARDED_BY(lock_) = 0;  // of thread_
  bool started_ GUARDED_BY(lock_) = false;
  int purges_ GUARDED_BY(lock_) = 0;
};

class FakePortManager : public PortManager {
 public:
  // --- PortManager
  Port* OpenPort(const std::string& name, PortWatcher* watcher) override;
  int32_t IsPortInUse(const std::string& name) override;
  void GetPortSettings(const std::string& name, std::string& text) override;
  void ClosePort(const std::string& name, PortWatcher* watcher) override;
  void SetPortSettings(const std::string& name, const std::string& text) override;

  // --- For tests
  // Makes a port that can be opened; other names can't. It lives as long as the manager.
  FakePort& Add(const std::string& name);
  void SetInUse(const std::string& name, bool inUse);
  std::string settings(const std::string& name);
  // The names given to OpenPort so far.
  std::vector<std::string> opened();

 private:
  platform::PlainLock lock_{"fake port manager", 5000};
  std::map<std::string, std::unique_ptr<FakePort>> ports_ GUARDED_BY(lock_);
  std::map<std::string, bool> inUse_ GUARDED_BY(lock_);
  std::map<std::string, std::string> settings_ GUARDED_BY(lock_);
  std::vector<std::string> opened_ GUARDED_BY(lock_);
};

}  // namespace rvx
