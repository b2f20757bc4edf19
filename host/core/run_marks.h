// Marks of living tray runs, seen by all processes that use a data folder.
#pragma once

#include <cstdint>
#include <string>

#include "host/core/file_handle.h"

namespace torvell {

// A mark is a lock on one byte of a file, so the system takes it away when its process ends,
// however that happens. The file stays empty. Any thread.
class RunMarks {
 public:
  // HostError DataFolder if the file can't be opened.
  explicit RunMarks(const std::string& file);

  // False if another process, or another object in this one, holds it.
  bool Take(int64_t run);
  void Release(int64_t run);
  // Somebody else holds it. This object's own marks do not count.
  bool IsTakenElsewhere(int64_t run);

 private:
  FileHandle file_;
};

}  // namespace torvell
