// The disk under the database, for tests: counts and fails its operations, and knows what a power
// cut would leave of what was written.
//
// FaultDisk disk;                       // used by all databases that are opened from here on
//   disk.Fail({.from = 3, .forEver = false});
//   ...
//   disk.beforeSync = [&](const std::string&) { images.push_back(disk.AfterPowerCut(seed)); };
//
// It passes calls on to the system's own files, so that locks and shared memory are the real ones.
// A sync does not reach the hardware; the disk itself keeps what is durable. Only one FaultDisk may
// exist at a time, and only one thread may use it.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace torvell {

// Which of the operations fail, counted from when the plan is set.
struct FaultPlan {
  int64_t from = 1;      // the first that fails, from 1
  bool forEver = false;  // all after it too
};

// Counts calls and decides which of them fail.
class FaultCounter {
 public:
  void Set(const FaultPlan& plan) {
    plan_ = plan;
    active_ = true;
    calls_ = 0;
  }
  void Clear() { active_ = false; }
  // Counts a call. True if it has to fail.
  bool IsDue() {
    if (!active_) return false;
    ++calls_;
    return plan_.forEver ? calls_ >= plan_.from : calls_ == plan_.from;
  }
  // Whether the plan came to its first failure.
  bool HasFailed() const { return calls_ >= plan_.from; }

 private:
  FaultPlan plan_;
  bool active_ = false;
  int64_t calls_ = 0;
};

class FaultDisk {
 public:
  FaultDisk();
  ~FaultDisk();
  FaultDisk(const FaultDisk&) = delete;
  FaultDisk& operator=(const FaultDisk&) = delete;

  FaultCounter& faults() { return faults_; }

  // Called with the name of the file just before something becomes durable: a power cut at this
  // moment loses the most.
  std::function<void(const std::string& file)> beforeSync;

  // File names with the bytes that a power cut at this moment may leave. Synced bytes are kept. Of
  // unsynced writes, draw 0 keeps none, 1 keeps all, and any other number keeps some: writes are
  // lost in any order, or torn between sectors.
  using Image = std::map<std::string, std::string>;
  Image AfterPowerCut(uint64_t draw) const;

 private:
  friend struct FaultDiskCalls;

  struct Change {
    bool isTruncation = false;
    int64_t offset = 0;  // of a truncation: the new size
    std::string bytes;
  };
  struct File {
    std::string durable;
    bool durablyThere = false;
    bool removed = false;      // and the removal is not synced
    bool syncsFolder = false;  // a new log: its first sync makes durable which files there are
    std::vector<Change> pending;
  };

  File& Find(const char* path);
  void Opened(const char* path, int flags);
  void Write(const char* path, const void* bytes, int size, int64_t offset);
  void Truncate(const char* path, int64_t size);
  void Sync(const char* path);
  void Remove(const char* path, bool durably);
  void SyncFolder();
  static void Apply(const Change& change, std::string& bytes);

  sqlite3_vfs vfs_{};
  sqlite3_vfs* real_ = nullptr;
  FaultCounter faults_;
  std::map<std::string, File> files_;
};

}  // namespace torvell
