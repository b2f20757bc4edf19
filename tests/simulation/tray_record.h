// The watcher of one run of a tray. It checks what a run promises to its watcher.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "boundary/tray.h"
#include "platform/event.h"
#include "platform/lock.h"

namespace rvx::soak {

class Observer;

// The observer owns it to the end of the simulated run, so that a late call is detected and does no
// harm. Any thread may call it.
class TrayRecord : public TrayWatcher {
 public:
  TrayRecord(Observer& observer, int number) : observer_(observer), number_(number) {}

  void TrayStarted(int32_t tray) override;
  void TrayFinished(int32_t tray) override;
  void TrayPauseChanged(int32_t tray, int32_t paused) override;
  void SampleStarted(int32_t tray, int32_t position) override;
  void SampleStatus(int32_t tray, int32_t position, std::string text) override;
  void SampleFinished(int32_t tray, int32_t position) override;

  // Called before the start, with the sample id at each filled position.
  void Expect(std::map<int32_t, std::string> samples, int edits);
  // Called when the start was refused: no call may come.
  void Refused();
  bool hasFinished();
  // True if the start was not refused and the end has not been reported.
  bool isOpen();
  // The number of positions whose end was reported.
  int finishedSamples();
  platform::Event& finished() { return finishedEvent_; }
  // Called at the end of every call; does what the host does inside it.
  std::function<void(TrayRecord&)> inside;

 private:
  void Enter(const std::string& call);
  void CheckSamplesOf(int32_t position);

  Observer& observer_;
  const int number_;
  platform::Event finishedEvent_{"soak: tray finished", platform::Event::Mode::ManualReset};
  platform::PlainLock lock_{"soak tray record", platform::kLeafRank};
  std::map<int32_t, std::string> samples_ GUARDED_BY(lock_);
  int edits_ GUARDED_BY(lock_) = 0;
  bool refused_ GUARDED_BY(lock_) = false;
  bool started_ GUARDED_BY(lock_) = false;
  bool finished_ GUARDED_BY(lock_) = false;
  int32_t lastStarted_ GUARDED_BY(lock_) = 0;
  int32_t lastFinished_ GUARDED_BY(lock_) = -1;
  bool movesBack_ GUARDED_BY(lock_) = false;
  int finishedSamples_ GUARDED_BY(lock_) = 0;
  int errorsAtStart_ GUARDED_BY(lock_) = 0;
};

}  // namespace rvx::soak
