#include "tests/support/fake_port.h"

#include <algorithm>
#include <utility>

#include "tests/support/unseen_guard.h"

namespace rvx {

using platform::Deadline;
using platform::PlainGuard;

FakePort::FakePort(std::string name) : name_(std::move(name)) {}

FakePort::~FakePort() {
  std::shared_ptr<platform::Thread> thread;
  {
    const PlainGuard guard(lock_);
    stop_ = true;
    thread = thread_;
  }
  changed_.Set();
  if (thread != nullptr) thread->Join();
}

void FakePort::Write(std::span<const uint8_t> bytes) {
  // The other end is another machine: its reply is no synchronisation between threads of this one.
  const UnseenScope scope;
  std::shared_ptr<const Script> script;
  {
    const PlainGuard guard(lock_);
    if (keepsWritten_) written_.emplace_back(bytes.begin(), bytes.end());
    script = script_;
  }
  wrote_.Set();
  const auto hear = [&](std::span<const uint8_t> heard) {
    if (script != nullptr && *script) (*script)(*this, heard);
  };
  if (filter_ != nullptr) {
    filter_->FromHost(bytes, hear);
  } else {
    hear(bytes);
  }
}

void FakePort::Purge() {
  const PlainGuard guard(lock_);
  ++purges_;
}

void FakePort::SetScript(Script script) {
  auto shared = std::make_shared<const Script>(std::move(script));
  const PlainGuard guard(lock_);
  script_ = std::move(shared);
}

void FakePort::Reply(std::string_view bytes, platform::Milliseconds delay) {
  const UnseenScope scope;
  if (filter_ == nullptr) {
    Deliver(bytes, delay);
    return;
  }
  filter_->FromInstrument(bytes, delay,
                          [this](std::string_view arriving, platform::Milliseconds after) {
                            Deliver(arriving, after);
                          });
}

void FakePort::Deliver(std::string_view bytes, platform::Milliseconds delay) {
  {
    const PlainGuard guard(lock_);
    platform::Microseconds due = platform::MonotonicTime() + delay;
    // A line keeps the order of what is sent on it.
    if (!chunks_.empty()) due = std::max(due, chunks_.back().due);
    chunks_.push_back({due, std::string(bytes)});
  }
  changed_.Set();
}

std::vector<std::string> FakePort::written() {
  const PlainGuard guard(lock_);
  return written_;
}

void FakePort::ClearWritten() {
  const PlainGuard guard(lock_);
  written_.clear();
}

size_t FakePort::CountWritten(std::string_view part) {
  const PlainGuard guard(lock_);
  return static_cast<size_t>(
      std::count_if(written_.begin(), written_.end(),
                    [&](const std::string& text) { return text.find(part) != std::string::npos; }));
}

bool FakePort::WaitForWritten(std::string_view part, size_t count, platform::Milliseconds timeout) {
  const Deadline deadline = Deadline::After(timeout);
  while (CountWritten(part) < count) {
    if (!wrote_.Wait(deadline)) return CountWritten(part) >= count;
  }
  return true;
}

int FakePort::purges() {
  const PlainGuard guard(lock_);
  return purges_;
}

bool FakePort::IsOpen() {
  const PlainGuard guard(lock_);
  return !watchers_.empty();
}

void FakePort::Attach(PortWatcher* watcher) {
  {
    const PlainGuard guard(lock_);
    watchers_.push_back(watcher);
    if (started_) return;
    started_ = true;
  }
  auto thread = platform::StartThread("fake port " + name_, [this] { DeliverAll(); });
  const PlainGuard guard(lock_);
  thread_ = std::move(thread);
}

void FakePort::Detach(PortWatcher* watcher) {
  for (bool found = false;; found = true) {
    {
      const PlainGuard guard(lock_);
      if (!found) {
        const auto place = std::find(watchers_.begin(), watchers_.end(), watcher);
        if (place == watchers_.end()) return;
        watchers_.erase(place);
      }
      if (!delivering_ || platform::CurrentThreadId() == deliverer_) return;
    }
    calm_.Wait();
  }
}

void FakePort::DeliverAll() {
  {
    const PlainGuard guard(lock_);
    deliverer_ = platform::CurrentThreadId();
  }
  for (;;) {
    Deadline deadline = Deadline::Never();
    std::string bytes;
    {
      const PlainGuard guard(lock_);
      if (stop_) return;
      if (!chunks_.empty()) {
        deadline = Deadline::At(chunks_.front().due);
        if (deadline.HasPassed()) {
          bytes = std::move(chunks_.front().bytes);
          chunks_.pop_front();
        }
      }
    }
    if (!bytes.empty()) {
      CallWatchers(bytes);
    } else {
      changed_.Wait(deadline);
    }
  }
}

void FakePort::CallWatchers(const std::string& bytes) {
  std::vector<PortWatcher*> watchers;
  {
    const PlainGuard guard(lock_);
    watchers = watchers_;
    delivering_ = true;
    calm_.Reset();
  }
  const std::span<const uint8_t> chunk(reinterpret_cast<const uint8_t*>(bytes.data()),
                                       bytes.size());
  for (PortWatcher* watcher : watchers) {
    bool attached = false;
    {
      const PlainGuard guard(lock_);
      attached = std::find(watchers_.begin(), watchers_.end(), watcher) != watchers_.end();
    }
    if (attached) watcher->Receive(chunk);
  }
  {
    const PlainGuard guard(lock_);
    delivering_ = false;
  }
  calm_.Set();
}

Port* FakePortManager::OpenPort(const std::string& name, PortWatcher* watcher) {
  FakePort* port = nullptr;
  {
    const PlainGuard guard(lock_);
    opened_.push_back(name);
    const auto found = ports_.find(name);
    if (found == ports_.end()) return nullptr;
    port = found->second.get();
  }
  port->Attach(watcher);
  return port;
}

int32_t FakePortManager::IsPortInUse(const std::string& name) {
  const PlainGuard guard(lock_);
  const auto found = inUse_.find(name);
  return found != inUse_.end() && found->second ? 1 : 0;
}

void FakePortManager::GetPortSettings(const std::string& name, std::string& text) {
  text = settings(name);
}

void FakePortManager::ClosePort(const std::string& name, PortWatcher* watcher) {
  FakePort* port = nullptr;
  {
    const PlainGuard guard(lock_);
    const auto found = ports_.find(name);
    if (found == ports_.end()) return;
    port = found->second.get();
  }
  port->Detach(watcher);
}

void FakePortManager::SetPortSettings(const std::string& name, const std::string& text) {
  const PlainGuard guard(lock_);
  settings_[name] = text;
}

FakePort& FakePortManager::Add(const std::string& name) {
  auto port = std::make_unique<FakePort>(name);
  const PlainGuard guard(lock_);
  // An earlier port of the name stays, because it may still be in use.
  return *ports_.try_emplace(name, std::move(port)).first->second;
}

void FakePortManager::SetInUse(const std::string& name, bool inUse) {
  const PlainGuard guard(lock_);
  inUse_[name] = inUse;
}

std::string FakePortManager::settings(const std::string& name) {
  const PlainGuard guard(lock_);
  const auto found = settings_.find(name);
  return found != settings_.end() ? found->second : std::string();
}

std::vector<std::string> FakePortManager::opened() {
  const PlainGuard guard(lock_);
  return opened_;
}

}  // namespace rvx
