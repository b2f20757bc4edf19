// The order of everything that is done to one instrument's tray.
#pragma once

#include <QObject>
#include <deque>
#include <functional>

#include "host/desktop/job_runner.h"
#include "host/desktop/tray_store.h"

namespace torvell {

// Runs jobs for the instrument one after the other and keeps the tray as it was read after the last
// of them. Holds back what is made from that tray: an edit that is made from an older tray would
// lose samples. The window's thread only.
class TrayJobs : public QObject {
  Q_OBJECT

 public:
  using Job = std::function<void()>;

  // Both outlive this object.
  TrayJobs(JobRunner& runner, TrayStore& store) : runner_(runner), store_(store) {}

  // The tray as it was read last.
  const TraySnapshot& tray() const { return tray_; }
  // A job for the instrument is pending.
  bool IsAsking() const { return asking_ > 0; }
  // The tray is being read; the instrument's may differ from tray().
  bool IsReading() const { return reading_ != Reading::None; }
  // Close was called.
  bool IsClosing() const { return closing_; }

  // Runs `job` on the runner after the earlier jobs; then `done` or `failed` on the window's
  // thread. A failure also emits Failed, after the tray has been asked for again.
  void Do(Job job, Job done = {}, Job failed = {});
  // Reads the tray. Any number of calls while it is being read lead to one more reading.
  void Read();
  // Runs `job` on the window's thread, in the order of calls, once no job is pending and tray() is
  // up to date. After Close nothing new is accepted.
  void WhenIdle(Job job);
  // From now on WhenIdle accepts nothing new. What waits already is still run.
  void Close() { closing_ = true; }
  // Runs `job` after everything that waits, also after Close.
  void AfterWaiting(Job job);

 Q_SIGNALS:
  // IsAsking or IsReading has changed.
  void Changed();
  // tray() is new.
  void TrayRead();
  // A job threw: a complete text.
  void Failed(const QString& text);

 private:
  enum class Reading {
    None,
    OnItsWay,      // leads to None
    OnItsWayStale  // the tray has changed since the reading began: leads to OnItsWay
  };

  void CountAsking(int change);
  // Ends a reading, and begins another if its result is already out of date.
  void EndReading();
  void RunWaiting();

  JobRunner& runner_;
  TrayStore& store_;
  TraySnapshot tray_;
  int asking_ = 0;
  Reading reading_ = Reading::None;
  bool closing_ = false;
  std::deque<Job> waiting_;
};

}  // namespace torvell
