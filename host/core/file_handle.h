// A file descriptor with an owner, and operations on descriptors.
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
  // Does not change errno.
  void Close();

 private:
  int descriptor_ = -1;
};

// Writes all bytes, also when signals interrupt. Returns false with errno set on failure.
bool WriteAll(int descriptor, std::string_view bytes);
// Reads the file from its beginning to its end. Returns false with errno set on failure.
bool ReadAll(int descriptor, std::string& bytes);
// Makes the creation or removal of a file of this name durable. Returns false with errno set on
// failure.
bool SyncFolderOf(const std::string& path);

}  // namespace torvell
