#include "platform/deadline_heap.h"

#include "platform/task.h"

namespace platform::detail {

void DeadlineHeap::Push(Microseconds moment, Task& task) {
  entries_.emplace_back();
  MoveUp(entries_.size() - 1, {moment, nextSequence_++, &task});
}

Task& DeadlineHeap::Pop() {
  Task& task = *entries_.front().task;
  Remove(task);
  return task;
}

void DeadlineHeap::Remove(Task& task) {
  const size_t index = task.heapIndex;
  if (index == Task::kNotInHeap) return;
  task.heapIndex = Task::kNotInHeap;
  const Entry last = entries_.back();
  entries_.pop_back();
  if (index == entries_.size()) return;
  if (index > 0 && Before(last, entries_[(index - 1) / 2])) {
    MoveUp(index, last);
  } else {
    MoveDown(index, last);
  }
}

void DeadlineHeap::Put(size_t index, const Entry& entry) {
  entries_[index] = entry;
  entry.task->heapIndex = index;
}

void DeadlineHeap::MoveUp(size_t index, const Entry& entry) {
  while (index > 0) {
    const size_t parent = (index - 1) / 2;
    if (!Before(entry, entries_[parent])) break;
    Put(index, entries_[parent]);
    index = parent;
  }
  Put(index, entry);
}

void DeadlineHeap::MoveDown(size_t index, const Entry& entry) {
  for (;;) {
    size_t child = 2 * index + 1;
    if (child >= entries_.size()) break;
    if (child + 1 < entries_.size() && Before(entries_[child + 1], entries_[child])) ++child;
    if (!Before(entries_[child], entry)) break;
    Put(index, entries_[child]);
    index = child;
  }
  Put(index, entry);
}

}  // namespace platform::detail
