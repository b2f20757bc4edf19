// Gives other threads access to the window's thread.
#pragma once

#include <QObject>
#include <functional>
#include <memory>

#include "boundary/viscometer_instrument.h"
#include "host/core/user_interface.h"

class QWidget;

namespace torvell {

// Runs jobs on the window's thread. Made on it after the QApplication, and destroyed on it after
// all threads that may call Run have ended.
class GuiThread : public QObject, public UserInterfaceExecutor {
 public:
  GuiThread();
  ~GuiThread() override;

  // UserInterfaceExecutor. The thread runs jobs whenever it handles events, also while a dialog is
  // open.
  void Run(const std::function<void()>& job) override;

  // Runs the job later, in the order of posting, and returns at once. Jobs that still wait when
  // this object is destroyed are dropped. Any thread.
  void Post(std::function<void()> job);

 private:
  struct Call;

  const platform::ThreadId threadId_;
};

// Converts between a widget and the handle that the module takes for the parent of its status
// window. Both sides are built with the same toolkit; only this file relies on that.
rvx::WindowHandle* ToWindowHandle(QWidget* widget);
QWidget* ToWidget(rvx::WindowHandle* handle);

}  // namespace torvell
