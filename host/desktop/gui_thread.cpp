#include "host/desktop/gui_thread.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QWidget>
#include <exception>

#include "platform/event.h"

namespace torvell {

// One call of Run, which waits on its own stack until the job is done.
struct GuiThread::Call {
  std::exception_ptr raised;
  platform::Event done{"window job is done"};
};

GuiThread::GuiThread() : threadId_(platform::CurrentThreadId()) {}

GuiThread::~GuiThread() = default;

void GuiThread::Run(const std::function<void()>& job) {
  if (platform::CurrentThreadId() == threadId_) {
    job();
    return;
  }
  Call call;
  QMetaObject::invokeMethod(
      this,
      [&call, &job] {
        try {
          job();
        } catch (...) {
          call.raised = std::current_exception();
        }
        call.done.Set();
      },
      Qt::QueuedConnection);
  call.done.Wait();
  if (call.raised) std::rethrow_exception(call.raised);
}

void GuiThread::Post(std::function<void()> job) {
  QMetaObject::invokeMethod(this, std::move(job), Qt::QueuedConnection);
}

rvx::WindowHandle* ToWindowHandle(QWidget* widget) {
  return reinterpret_cast<rvx::WindowHandle*>(widget);
}

QWidget* ToWidget(rvx::WindowHandle* handle) { return reinterpret_cast<QWidget*>(handle); }

}  // namespace torvell
