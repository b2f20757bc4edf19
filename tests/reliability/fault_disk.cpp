#include "tests/reliability/fault_disk.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <utility>

namespace torvell {
namespace {

// A disk writes a sector as a whole or not at all.
constexpr int64_t kSector = 512;

// SQLite's handle of an open file. The system's own handle follows it in the same memory.
struct OpenFile {
  sqlite3_file base;
  FaultDisk* disk;
  const char* path;  // SQLite keeps it as long as the file is open; null for a temporary one
  sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

OpenFile* Ours(sqlite3_file* file) { return reinterpret_cast<OpenFile*>(file); }
sqlite3_file* Real(sqlite3_file* file) { return Ours(file)->Real(); }
const sqlite3_io_methods& Methods(sqlite3_file* file) { return *Real(file)->pMethods; }

std::string ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace

// The functions that SQLite calls.
struct FaultDiskCalls {
  static FaultDisk& DiskOf(sqlite3_vfs* vfs) { return *static_cast<FaultDisk*>(vfs->pAppData); }
  static bool Fails(sqlite3_file* file) { return Ours(file)->disk->faults_.IsDue(); }

  static int Open(sqlite3_vfs* vfs, const char* path, sqlite3_file* file, int flags, int* out) {
    FaultDisk& disk = DiskOf(vfs);
    OpenFile* ours = Ours(file);
    ours->base.pMethods = nullptr;
    if (disk.faults_.IsDue()) return SQLITE_CANTOPEN;
    if (path != nullptr) disk.Opened(path, flags);
    const int result = disk.real_->xOpen(disk.real_, path, ours->Real(), flags, out);
    if (result != SQLITE_OK) return result;
    ours->disk = &disk;
    ours->path = path;
    ours->base.pMethods = MethodTable();
    return SQLITE_OK;
  }
  static int Delete(sqlite3_vfs* vfs, const char* path, int syncFolder) {
    FaultDisk& disk = DiskOf(vfs);
    if (disk.faults_.IsDue()) return SQLITE_IOERR_DELETE;
    const int result = disk.real_->xDelete(disk.real_, path, 0);
    if (result == SQLITE_OK) disk.Remove(path, syncFolder != 0);
    return result;
  }
  static int Access(sqlite3_vfs* vfs, const char* path, int flags, int* out) {
    FaultDisk& disk = DiskOf(vfs);
    if (disk.faults_.IsDue()) return SQLITE_IOERR_ACCESS;
    return disk.real_->xAccess(disk.real_, path, flags, out);
  }

  static int Close(sqlite3_file* file) { return Methods(file).xClose(Real(file)); }
  static int Read(sqlite3_file* file, void* bytes, int size, sqlite3_int64 offset) {
    if (Fails(file)) return SQLITE_IOERR_READ;
    return Methods(file).xRead(Real(file), bytes, size, offset);
  }
  static int Write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) {
    if (Fails(file)) return SQLITE_FULL;
    if (Ours(file)->path != nullptr) Ours(file)->disk->Write(Ours(file)->path, bytes, size, offset);
    return Methods(file).xWrite(Real(file), bytes, size, offset);
  }
  static int Truncate(sqlite3_file* file, sqlite3_int64 size) {
    if (Fails(file)) return SQLITE_IOERR_TRUNCATE;
    if (Ours(file)->path != nullptr) Ours(file)->disk->Truncate(Ours(file)->path, size);
    return Methods(file).xTruncate(Real(file), size);
  }
  static int Sync(sqlite3_file* file, int) {
    if (Fails(file)) return SQLITE_IOERR_FSYNC;
    if (Ours(file)->path != nullptr) Ours(file)->disk->Sync(Ours(file)->path);
    return SQLITE_OK;
  }
  static int FileSize(sqlite3_file* file, sqlite3_int64* size) {
    if (Fails(file)) return SQLITE_IOERR_FSTAT;
    return Methods(file).xFileSize(Real(file), size);
  }
  static int Lock(sqlite3_file* file, int level) { return Methods(file).xLock(Real(file), level); }
  static int Unlock(sqlite3_file* file, int level) {
    return Methods(file).xUnlock(Real(file), level);
  }
  static int CheckLock(sqlite3_file* file, int* out) {
    return Methods(file).xCheckReservedLock(Real(file), out);
  }
  static int Control(sqlite3_file* file, int op, void* argument) {
    return Methods(file).xFileControl(Real(file), op, argument);
  }
  static int SectorSize(sqlite3_file* file) { return Methods(file).xSectorSize(Real(file)); }
  static int Characteristics(sqlite3_file* file) {
    return Methods(file).xDeviceCharacteristics(Real(file));
  }
  static int ShmMap(sqlite3_file* file, int page, int size, int extend, void volatile** out) {
    if (Fails(file)) return SQLITE_IOERR_SHMMAP;
    return Methods(file).xShmMap(Real(file), page, size, extend, out);
  }
  static int ShmLock(sqlite3_file* file, int offset, int count, int flags) {
    return Methods(file).xShmLock(Real(file), offset, count, flags);
  }
  static void ShmBarrier(sqlite3_file* file) { Methods(file).xShmBarrier(Real(file)); }
  static int ShmUnmap(sqlite3_file* file, int remove) {
    return Methods(file).xShmUnmap(Real(file), remove);
  }

  // Version 2: with shared memory, without mapped reading, which could not be counted.
  static const sqlite3_io_methods* MethodTable() {
    static const sqlite3_io_methods table = {
        2,        Close,     Read,    Write,      Truncate,        Sync,   FileSize, Lock,
        Unlock,   CheckLock, Control, SectorSize, Characteristics, ShmMap, ShmLock,  ShmBarrier,
        ShmUnmap, nullptr,   nullptr};
    return &table;
  }
};

FaultDisk::FaultDisk() : real_(sqlite3_vfs_find(nullptr)) {
  vfs_ = *real_;
  vfs_.zName = "fault disk";
  vfs_.pAppData = this;
  vfs_.szOsFile = static_cast<int>(sizeof(OpenFile)) + real_->szOsFile;
  vfs_.xOpen = FaultDiskCalls::Open;
  vfs_.xDelete = FaultDiskCalls::Delete;
  vfs_.xAccess = FaultDiskCalls::Access;
  sqlite3_vfs_register(&vfs_, 1);
}

FaultDisk::~FaultDisk() { sqlite3_vfs_unregister(&vfs_); }

FaultDisk::File& FaultDisk::Find(const char* path) {
  const auto [entry, isNew] = files_.try_emplace(path);
  // A file that existed before the test is durable.
  if (isNew && std::filesystem::exists(path)) {
    entry->second.durable = ReadBytes(path);
    entry->second.durablyThere = true;
  }
  return entry->second;
}

void FaultDisk::Opened(const char* path, int flags) {
  const bool isLog = (flags & (SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_WAL)) != 0;
  File& file = Find(path);
  file.removed = false;
  if (isLog && !std::filesystem::exists(path)) file.syncsFolder = true;
}

void FaultDisk::Write(const char* path, const void* bytes, int size, int64_t offset) {
  Find(path).pending.push_back(
      {false, offset, std::string(static_cast<const char*>(bytes), static_cast<size_t>(size))});
}

void FaultDisk::Truncate(const char* path, int64_t size) {
  Find(path).pending.push_back({true, size, {}});
}

void FaultDisk::Sync(const char* path) {
  if (beforeSync) beforeSync(std::filesystem::path(path).filename());
  File& file = Find(path);
  for (const Change& change : file.pending) Apply(change, file.durable);
  file.pending.clear();
  file.durablyThere = true;
  if (std::exchange(file.syncsFolder, false)) SyncFolder();
}

void FaultDisk::SyncFolder() {
  std::erase_if(files_, [](const auto& entry) { return entry.second.removed; });
}

void FaultDisk::Remove(const char* path, bool durably) {
  File& file = Find(path);
  file.pending.push_back({true, 0, {}});
  file.removed = true;
  if (durably) SyncFolder();
}

void FaultDisk::Apply(const Change& change, std::string& bytes) {
  const auto offset = static_cast<size_t>(change.offset);
  if (change.isTruncation) {
    bytes.resize(offset);
    return;
  }
  bytes.resize(std::max(bytes.size(), offset + change.bytes.size()));
  bytes.replace(offset, change.bytes.size(), change.bytes);
}

FaultDisk::Image FaultDisk::AfterPowerCut(uint64_t draw) const {
  constexpr uint64_t kDropAll = 0;
  constexpr uint64_t kKeepAll = 1;
  std::mt19937_64 random(draw);
  const auto isKept = [&] { return draw == kKeepAll || (draw != kDropAll && random() % 2 == 0); };
  Image image;
  for (const auto& [path, file] : files_) {
    if (file.removed && isKept()) continue;  // its removal has reached the disk
    std::string bytes = file.durable;
    bool touched = file.durablyThere;
    for (const Change& change : file.pending) {
      if (change.isTruncation) {
        if (isKept()) Apply(change, bytes);
        continue;
      }
      const auto size = static_cast<int64_t>(change.bytes.size());
      for (int64_t at = 0; at < size;) {
        const int64_t end =
            std::min(size, (change.offset + at) / kSector * kSector + kSector - change.offset);
        if (isKept()) {
          const auto first = static_cast<size_t>(at);
          Apply({false, change.offset + at,
                 change.bytes.substr(first, static_cast<size_t>(end) - first)},
                bytes);
          touched = true;
        }
        at = end;
      }
    }
    if (touched) image[std::filesystem::path(path).filename()] = bytes;
  }
  return image;
}

}  // namespace torvell
