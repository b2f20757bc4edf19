// Waiting tasks by the moment at which they wake, the earliest on top. Of equal moments the task
// that began to wait first is on top.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/time_base.h"

namespace platform::detail {

class Task;

class DeadlineHeap {
 public:
  bool empty() const { return entries_.empty(); }
  Microseconds earliest() const { return entries_.front().moment; }

  // The task must not be in the heap.
  void Push(Microseconds moment, Task& task);
  // Takes out the earliest.
  Task& Pop();
  // Takes out the task if it is in the heap.
  void Remove(Task& task);

 private:
  struct Entry {
    Microseconds moment;
    uint64_t sequence;
    Task* task;
  };
  static bool Before(const Entry& a, const Entry& b) {
    return a.moment != b.moment ? a.moment < b.moment : a.sequence < b.sequence;
  }
  void Put(size_t index, const Entry& entry);
  void MoveUp(size_t index, const Entry& entry);
  void MoveDown(size_t index, const Entry& entry);

  std::vector<Entry> entries_;
  uint64_t nextSequence_ = 0;
};

}  // namespace platform::detail
