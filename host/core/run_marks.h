// Marks of tray runs that are alive, seen by all processes that use a data folder.
#pragma once

#include <cstdint>
#include <string>

#include "host/core/file_handle.h"

namespace torvell {

// A mark is a lock on one byte of a file, so the system removes it when its process ends, in
// whatever way. The file stays empty. Any thread.
class RunMarks {
 public:
  // HostError DataFolder if the file can't be opened.
  explicit RunMarks(const std::string& file);

  // Returns false if another process, or another object in this one, has the mark.
  bool Take(int64_t run);
  void Release(int64_t run);
  // Returns true if another process or object has the mark. This object's own marks do not count.
  bool IsTakenElsewhere(int64_t run);

 private:
  FileHandle file_;
};

}  // namespace torvell
