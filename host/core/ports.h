// The ports: which device belongs to "COM1" to "COM4", and the port objects of the module.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "boundary/host.h"
#include "host/core/listener_list.h"
#include "host/core/lock_ranks.h"
#include "host/core/port_settings.h"
#include "platform/lock.h"

namespace torvell {

class Database;
class OpenLine;
class Users;

inline constexpr const char* kPortNames[] = {"COM1", "COM2", "COM3", "COM4"};

struct PortMapping {
  std::string name;      // "COM1"
  std::string device;    // "/dev/ttyUSB0", "/dev/serial/by-id/..."; empty: no device
  std::string settings;  // port_settings.h; empty without a device
  bool open = false;     // in this process, by an instrument or by discovery
};

// Is told that a line broke or is back.
class LineListener {
 public:
  virtual ~LineListener() = default;
  // Called on the port's thread without a lock held, once for each change.
  virtual void LineBroken(const std::string& port, const std::string& reason) = 0;
  virtual void LineRestored(const std::string& port) = 0;
};

// The ports of a data folder. Any thread.
//
// For the module a port without a device is in use with an empty settings text, so that discovery
// skips it at once. While the instrument is simulated, the first port without a device opens as an
// empty line, on which nothing is ever received: a simulated instrument lives there.
class PortDirectory : public rvx::PortManager {
 public:
  // `isSimulated` returns the present value of the "Simulate" setting; called on any thread.
  PortDirectory(Database& database, Users& users, std::function<bool()> isSimulated);
  ~PortDirectory() override;

  // Returns all four, in order. HostError Database.
  std::vector<PortMapping> List();
  // Level 50. `settings` is what a person types, see ParsePortSettings; without it 9600 baud. Takes
  // effect when the port is opened next. BadInput: an unknown port name, a device whose path is not
  // absolute or that another port has, settings that can't be read.
  void SetMapping(const std::string& name, const std::string& device,
                  const std::optional<std::string>& settings = {});
  // Level 50. No effect on a port without a device.
  void ClearMapping(const std::string& name);
  // Returns why the last OpenPort of this port failed, or what broke its line; empty if all is
  // well.
  std::string LastFailure(const std::string& name);

  void AddListener(LineListener* listener) { listeners_.Add(listener); }
  // Once it returns the listener is not called any more.
  void RemoveListener(LineListener* listener) { listeners_.Remove(listener); }

  // rvx::PortManager
  rvx::Port* OpenPort(const std::string& name, rvx::PortWatcher* watcher) override;
  int32_t IsPortInUse(const std::string& name) override;
  void GetPortSettings(const std::string& name, std::string& text) override;
  void ClosePort(const std::string& name, rvx::PortWatcher* watcher) override;
  void SetPortSettings(const std::string& name, const std::string& text) override;

 private:
  std::optional<PortMapping> Find(const std::string& name);
  void Store(const PortMapping& before, const PortMapping& after);
  bool IsEmptyLine(const std::string& name);
  void SetFailure(const std::string& name, const std::string& reason);
  std::shared_ptr<OpenLine> OpenDevice(const PortMapping& mapping, std::string& failure);

  Database& database_;
  Users& users_;
  const std::function<bool()> isSimulated_;
  ListenerList<LineListener> listeners_;
  platform::PlainLock lock_{"port directory", kPortDirectoryLockRank};
  std::map<std::string, std::shared_ptr<OpenLine>> open_ GUARDED_BY(lock_);
  // The last line of each port that was shut; its device may not be released yet.
  std::map<std::string, std::shared_ptr<OpenLine>> closing_ GUARDED_BY(lock_);
  std::map<std::string, std::string> failures_ GUARDED_BY(lock_);
};

}  // namespace torvell
