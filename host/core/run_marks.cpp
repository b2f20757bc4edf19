#include "host/core/run_marks.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <cerrno>
#include <cstring>

#include "host/core/host_error.h"

namespace torvell {
namespace {

// These locks belong to the open file and not to the process, so that two objects in one process
// exclude each other as two processes do.
int LockByte(int descriptor, int command, int64_t byte, short& type) {
  struct flock lock = {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = byte;
  lock.l_len = 1;
  const int result = fcntl(descriptor, command, &lock);
  type = lock.l_type;
  return result;
}

}  // namespace

RunMarks::RunMarks(const std::string& file)
    : file_(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0660)) {
  if (file_.IsOpen()) return;
  throw HostError(
      HostErrorKind::DataFolder,
      fmt::format("The file {} can't be opened: {}. Give this user the right to write to "
                  "the data folder, or use another one.",
                  file, std::strerror(errno)));
}

bool RunMarks::Take(int64_t run) {
  short type = F_WRLCK;
  return LockByte(file_.get(), F_OFD_SETLK, run, type) == 0;
}

void RunMarks::Release(int64_t run) {
  short type = F_UNLCK;
  LockByte(file_.get(), F_OFD_SETLK, run, type);
}

bool RunMarks::IsTakenElsewhere(int64_t run) {
  short type = F_WRLCK;
  return LockByte(file_.get(), F_OFD_GETLK, run, type) == 0 && type != F_UNLCK;
}

}  // namespace torvell
