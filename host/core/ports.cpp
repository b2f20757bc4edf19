#include "host/core/ports.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "host/core/audit_write.h"
#include "host/core/database.h"
#include "host/core/open_line.h"
#include "host/core/serial_port.h"
#include "host/core/users.h"
#include "platform/log.h"
#include "platform/time_base.h"

namespace torvell {
namespace {

bool IsPortName(const std::string& name) {
  return std::find(std::begin(kPortNames), std::end(kPortNames), name) != std::end(kPortNames);
}

std::string Describe(const PortMapping& mapping) {
  return mapping.device.empty() ? std::string() : mapping.device + " " + mapping.settings;
}

void CheckPortName(const std::string& name) {
  if (IsPortName(name)) return;
  throw HostError(HostErrorKind::BadInput,
                  fmt::format("There is no port \"{}\". Nothing was changed. The ports are COM1, "
                              "COM2, COM3 and COM4.",
                              name));
}

// A device works in real time, so under another time base it is refused.
std::string ClockRefusal(const std::string& device) {
  if (platform::CurrentTimeBase() == platform::TimeBaseKind::Real) return {};
  return fmt::format(
      "The device {} is not opened under a virtual or paced clock: an instrument on a line keeps "
      "real time. Use the real clock, or simulate the instrument on a port without a device.",
      device);
}

}  // namespace

PortDirectory::PortDirectory(Database& database, Users& users, std::function<bool()> isSimulated)
    : database_(database), users_(users), isSimulated_(std::move(isSimulated)) {}

PortDirectory::~PortDirectory() {
  std::vector<std::shared_ptr<OpenLine>> lines;
  {
    platform::PlainGuard guard(lock_);
    for (const auto& [name, line] : open_) {
      line->Shut();
      lines.push_back(line);
    }
    for (const auto& [name, line] : closing_) lines.push_back(line);
  }
  for (const auto& line : lines) line->WaitShut();
}

std::vector<PortMapping> PortDirectory::List() {
  std::vector<PortMapping> ports;
  for (const char* name : kPortNames) ports.push_back({name, "", "", false});
  WithDatabaseErrors("The list of ports could not be read", [&] {
    platform::PlainGuard guard(database_.lock());
    Query query(database_.Prepared("SELECT \"Name\", \"Device\", \"Settings\" FROM PORTS"));
    while (query->executeStep()) {
      for (PortMapping& port : ports) {
        if (port.name != query->getColumn(0).getString()) continue;
        port.device = query->getColumn(1).getString();
        port.settings = query->getColumn(2).getString();
      }
    }
  });
  platform::PlainGuard guard(lock_);
  for (PortMapping& port : ports) port.open = open_.count(port.name) != 0;
  return ports;
}

std::optional<PortMapping> PortDirectory::Find(const std::string& name) {
  for (PortMapping& port : List()) {
    if (port.name == name) return std::move(port);
  }
  return std::nullopt;
}

void PortDirectory::Store(const PortMapping& before, const PortMapping& after) {
  const Actor actor = users_.ActingAs();
  WithDatabaseErrors("The port could not be stored", [&] {
    platform::PlainGuard guard(database_.lock());
    Transaction transaction(database_);
    Query remove(database_.Prepared("DELETE FROM PORTS WHERE \"Name\" = ?"));
    remove->bind(1, after.name);
    remove->exec();
    if (!after.device.empty()) {
      Query insert(database_.Prepared("INSERT INTO PORTS VALUES (?, ?, ?)"));
      insert->bind(1, after.name);
      insert->bind(2, after.device);
      insert->bind(3, after.settings);
      insert->exec();
    }
    WriteAudit(database_, actor, {{"port " + after.name, Describe(before), Describe(after)}});
    transaction.Commit();
  });
}

void PortDirectory::SetMapping(const std::string& name, const std::string& device,
                               const std::optional<std::string>& settings) {
  users_.Require(kLevelManager, "change a port");
  CheckPortName(name);
  if (device.empty() || device.front() != '/' || device.find('\n') != std::string::npos) {
    throw HostError(HostErrorKind::BadInput,
                    fmt::format("\"{}\" is no device. Nothing was changed. Give a whole path, as "
                                "/dev/ttyUSB0 or /dev/serial/by-id/...",
                                device));
  }
  const auto parsed = settings ? ParsePortSettings(*settings) : PortSettings();
  if (!parsed) {
    throw HostError(
        HostErrorKind::BadInput,
        fmt::format("\"{}\" are no settings of a port. Nothing was changed. Accepted: {}.",
                    *settings, DescribePortSettings()));
  }
  PortMapping before;
  for (const PortMapping& port : List()) {
    if (port.name == name) before = port;
    if (port.name != name && port.device == device) {
      throw HostError(
          HostErrorKind::BadInput,
          fmt::format("{} has the device {} already. Nothing was changed. Clear that port "
                      "first.",
                      port.name, device));
    }
  }
  Store(before, {name, device, FormatPortSettings(*parsed), false});
}

void PortDirectory::ClearMapping(const std::string& name) {
  users_.Require(kLevelManager, "change a port");
  CheckPortName(name);
  const auto before = Find(name);
  if (before && !before->device.empty()) Store(*before, {name, "", "", false});
}

std::string PortDirectory::LastFailure(const std::string& name) {
  platform::PlainGuard guard(lock_);
  auto found = failures_.find(name);
  return found == failures_.end() ? std::string() : found->second;
}

void PortDirectory::SetFailure(const std::string& name, const std::string& reason) {
  platform::PlainGuard guard(lock_);
  failures_[name] = reason;
}

bool PortDirectory::IsEmptyLine(const std::string& name) {
  if (!isSimulated_()) return false;
  for (const PortMapping& port : List()) {
    if (port.device.empty()) return port.name == name;
  }
  return false;
}

std::shared_ptr<OpenLine> PortDirectory::OpenDevice(const PortMapping& mapping,
                                                    std::string& failure) {
  failure = mapping.device.empty() ? fmt::format("No device is set for {}.", mapping.name)
                                   : ClockRefusal(mapping.device);
  if (!failure.empty()) return nullptr;
  const PortSettings settings = ParsePortSettings(mapping.settings).value_or(PortSettings());
  LineEvents events;
  events.broken = [this, name = mapping.name](const std::string& reason) {
    SetFailure(name, "The line is broken: " + reason + ".");
    listeners_.ForEach([&](LineListener& listener) { listener.LineBroken(name, reason); });
  };
  events.restored = [this, name = mapping.name] {
    SetFailure(name, "");
    listeners_.ForEach([&](LineListener& listener) { listener.LineRestored(name); });
  };
  return SerialPort::Open(mapping.name, mapping.device, settings.rate, std::move(events), failure);
}

rvx::Port* PortDirectory::OpenPort(const std::string& name, rvx::PortWatcher* watcher) {
  try {
    const auto mapping = Find(name);
    if (!mapping) return nullptr;
    std::shared_ptr<OpenLine> before;
    {
      platform::PlainGuard guard(lock_);
      auto found = closing_.find(name);
      if (found != closing_.end()) before = found->second;
    }
    // The device can't be opened again before its last line has released it.
    if (before) before->WaitShut();
    std::string failure;
    const bool emptyLine = mapping->device.empty() && IsEmptyLine(name);
    platform::PlainGuard guard(lock_);
    auto found = open_.find(name);
    if (found == open_.end()) {
      std::shared_ptr<OpenLine> line;
      if (emptyLine) {
        line = std::make_shared<EmptyLine>();
      } else {
        line = OpenDevice(*mapping, failure);
      }
      failures_[name] = failure;
      if (!line) return nullptr;
      found = open_.emplace(name, std::move(line)).first;
    }
    found->second->AddWatcher(watcher);
    return found->second.get();
  } catch (const HostError& error) {
    SetFailure(name, error.what());
    return nullptr;
  }
}

int32_t PortDirectory::IsPortInUse(const std::string& name) {
  try {
    const auto mapping = Find(name);
    if (!mapping) return 1;
    if (mapping->device.empty()) return IsEmptyLine(name) ? 0 : 1;
    return mapping->open ? 1 : 0;
  } catch (const HostError& error) {
    SetFailure(name, error.what());
    return 1;
  }
}

void PortDirectory::GetPortSettings(const std::string& name, std::string& text) {
  text.clear();
  try {
    const auto mapping = Find(name);
    if (mapping) text = mapping->settings;
  } catch (const HostError& error) {
    SetFailure(name, error.what());
  }
}

void PortDirectory::SetPortSettings(const std::string& name, const std::string& text) {
  try {
    const auto mapping = Find(name);
    const auto settings = ParsePortSettings(text);
    if (!mapping || mapping->device.empty() || !settings) return;
    PortMapping after = *mapping;
    after.settings = FormatPortSettings(*settings);
    if (after.settings != mapping->settings) Store(*mapping, after);
  } catch (const HostError& error) {
    // The flag is a convenience: the instrument works without it.
    platform::Log(platform::LogLevel::Warning, error.what());
  }
}

void PortDirectory::ClosePort(const std::string& name, rvx::PortWatcher* watcher) {
  std::shared_ptr<OpenLine> line;
  {
    platform::PlainGuard guard(lock_);
    auto found = open_.find(name);
    if (found == open_.end()) return;
    line = found->second;
  }
  line->RemoveWatcher(watcher);
  {
    platform::PlainGuard guard(lock_);
    auto found = open_.find(name);
    // Another thread may have closed the line or begun to use it in between.
    if (found == open_.end() || found->second != line || line->HasWatchers()) return;
    open_.erase(found);
    closing_[name] = line;
    line->Shut();
  }
  line->WaitShut();
}

}  // namespace torvell
