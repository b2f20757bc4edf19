// A file descriptor that is closed when it goes, and what is done with one.
#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace torvell {

class FileHandle {
 public:
  FileHandle() = default;
  explicit FileHandle(int descriptor) : descriptor_(descriptor) {}
  FileHandle(FileHandle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileHandle& operator=(FileHandle&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~FileHandle() { Close(); }

  bool IsOpen() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }
  // Leaves errno alone.
  void Close();

 private:
  int descriptor_ = -1;
};

// All bytes, whatever interrupts; false with errno set.
bool WriteAll(int descriptor, std::string_view bytes);
// From the beginning to the end.
bool ReadAll(int descriptor, std::string& bytes);
// Makes durable that a file of this name was made or removed.
bool SyncFolderOf(const std::string& path);

}  // namespace torvell
