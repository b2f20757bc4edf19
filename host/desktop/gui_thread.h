// The window's thread as the rest of the program reaches it.
#pragma once

#include <QObject>
#include <functional>
#include <memory>

#include "boundary/viscometer_instrument.h"
#include "host/core/user_interface.h"

class QWidget;

namespace torvell {

// Runs jobs on the window's thread. Made there after the QApplication and destroyed there;
// everybody who may call Run has ended before.
class GuiThread : public QObject, public UserInterfaceExecutor {
 public:
  GuiThread();
  ~GuiThread() override;

  // UserInterfaceExecutor. Jobs run whenever the thread looks at its events, also while a dialog
  // stands.
  void Run(const std::function<void()>& job) override;

  // Runs the job later, in the order of posting, and returns at once. A job that waits when this
  // object ends is dropped. Any thread.
  void Post(std::function<void()> job);

 private:
  struct Call;

  const platform::ThreadId threadId_;
};

// A widget as the module takes it for the parent of its status window, and back. Both sides are
// built with the same toolkit; this is the one place that knows.
rvx::WindowHandle* ToWindowHandle(QWidget* widget);
QWidget* ToWidget(rvx::WindowHandle* handle);

}  // namespace torvell
