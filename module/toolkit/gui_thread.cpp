#include "module/toolkit/gui_thread.h"

#include <QApplication>
#include <QThread>
#include <utility>

namespace rvx {

bool IsGuiThread() {
  return QCoreApplication::instance() != nullptr &&
         QThread::currentThread() == QCoreApplication::instance()->thread();
}

void AssertGuiThread([[maybe_unused]] const char* where) {
  Q_ASSERT_X(IsGuiThread(), where, "windows are touched on the GUI thread alone");
}

void RunOnGuiThread(const std::function<void()>& job) {
  if (IsGuiThread()) {
    job();
    return;
  }
  QMetaObject::invokeMethod(
      QCoreApplication::instance(), [&job] { job(); }, Qt::BlockingQueuedConnection);
}

void PostToGuiThread(std::function<void()> job) {
  QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(job), Qt::QueuedConnection);
}

}  // namespace rvx
