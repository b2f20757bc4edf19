#include "host/core/file_handle.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>

namespace torvell {

void FileHandle::Close() {
  if (descriptor_ < 0) return;
  const int before = errno;
  close(std::exchange(descriptor_, -1));
  errno = before;
}

bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

bool ReadAll(int descriptor, std::string& bytes) {
  bytes.clear();
  std::array<char, 4096> chunk{};
  off_t at = 0;
  for (;;) {
    const ssize_t count = pread(descriptor, chunk.data(), chunk.size(), at);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) return true;
    bytes.append(chunk.data(), static_cast<size_t>(count));
    at += count;
  }
}

bool SyncFolderOf(const std::string& path) {
  const std::string parent = std::filesystem::path(path).parent_path().string();
  FileHandle folder(
      open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return folder.IsOpen() && fsync(folder.get()) == 0;
}

}  // namespace torvell
