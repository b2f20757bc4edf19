#include "host/desktop/tray_jobs.h"

#include <utility>

namespace torvell {

void TrayJobs::CountAsking(int change) {
  asking_ += change;
  Q_EMIT Changed();
  RunWaiting();
}

void TrayJobs::Do(Job job, Job done, Job failed) {
  CountAsking(1);
  runner_.Do(
      std::move(job),
      [this, done = std::move(done)] {
        if (done) done();
        CountAsking(-1);
      },
      [this, failed = std::move(failed)](const QString& text) {
        if (failed) failed();
        Read();  // first, so that what waits is made from the present tray
        CountAsking(-1);
        Q_EMIT Failed(text);
      });
}

void TrayJobs::Read() {
  if (reading_ != Reading::None) {
    reading_ = Reading::OnItsWayStale;
    return;
  }
  reading_ = Reading::OnItsWay;
  auto found = std::make_shared<TraySnapshot>();
  runner_.Do([this, found] { *found = store_.Read(); },
             [this, found] {
               tray_ = std::move(*found);
               // First, so that listeners of TrayRead may change the tray.
               EndReading();
               Q_EMIT TrayRead();
               RunWaiting();
             },
             // The old tray stays on the screen. If the job before this reading failed, its own
             // failure was already reported.
             [this](const QString&) {
               EndReading();
               Q_EMIT Changed();
               RunWaiting();
             });
}

void TrayJobs::EndReading() {
  if (std::exchange(reading_, Reading::None) == Reading::OnItsWayStale) Read();
}

void TrayJobs::WhenIdle(Job job) {
  if (!closing_) AfterWaiting(std::move(job));
}

void TrayJobs::AfterWaiting(Job job) {
  waiting_.push_back(std::move(job));
  RunWaiting();
}

void TrayJobs::RunWaiting() {
  while (!IsAsking() && !IsReading() && !waiting_.empty()) {
    const Job job = std::move(waiting_.front());
    waiting_.pop_front();
    job();
  }
}

}  // namespace torvell
