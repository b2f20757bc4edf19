// The base of the screens of an instrument, with what they have in common.
#pragma once

#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "module/execution/screen_maker.h"
#include "module/execution/screen_motion.h"
#include "module/instrument/c_rvx.h"
#include "module/screens/common/change_monitor.h"
#include "module/screens/common/reply_client.h"
#include "module/screens/common/screen_worker.h"
#include "module/toolkit/controls.h"
#include "module/toolkit/form_view.h"
#include "platform/event.h"
#include "platform/prompt.h"

class QAbstractButton;

namespace rvx {

// The id that every form gives its Help button.
inline constexpr int kHelpId = 57670;

// A form for an instrument, in its own frame. GUI thread.
//
// A derived class sets up its form in the constructor, then calls BindButtons; what the screen
// decides is in a class without widgets. Its code runs inside Guard: an exception from a handler
// that was connected with On, from Tick, from an event of the view or from the end of a job closes
// the screen with a report instead of ending the program.
class CScreenView : public CFormView {
 public:
  ~CScreenView() override;

  // Returns 0 if the screen may close. Otherwise beeps, and shows the text of GetCloseRefusal in
  // the status line.
  int32_t QueryClose() final;
  // Whether its code has failed, which was reported; it closes then, or is not shown at all.
  bool HasFailed() const { return failed_; }

 protected:
  // `request` is valid until the frame is gone.
  explicit CScreenView(const ScreenRequest& request);

  C_RVX& instrument() const { return request_.instrument; }
  const std::string& label() const { return request_.label; }
  // Every command that moves or turns something goes through it: any end of the screen then sends
  // CAB.
  ScreenMotion& motion() const { return request_.motion; }

  // Connects the buttons of these ids: `close` and Escape close the screen, kHelpId opens its help
  // topic, Return presses `byDefault` unless another button has the focus. 0: there is none.
  void BindButtons(int close, int byDefault = 0);

  // Connects a signal of one of the form's widgets.
  template <class Sender, class Signal, class Handler>
  void On(Sender* sender, Signal signal, Handler handler) {
    connect(sender, signal, this, [this, handler = std::move(handler)](auto&&... arguments) {
      Guard([&] { handler(std::forward<decltype(arguments)>(arguments)...); });
    });
  }

  // Calls Tick in this period of real time, first as soon as the screen has been shown. Without a
  // period Tick is called that once.
  void SetTickPeriod(int milliseconds) { timer_.setInterval(milliseconds); }
  // Applies what depends on the present user (`level` is read anew each time) or on the instrument.
  // Not called any more once the instrument closes.
  virtual void Tick(int32_t /*level*/) {}

  // Has `refresh` called after each change of an instrument that the host reports.
  void RefreshOnChange(std::function<void()> refresh);

  // Runs `job` on another thread, after the jobs before it; then on the GUI thread `done`, or
  // `failed` with the text of an exception, unless the view is destroyed. For work that may block,
  // such as calls of an archive. The job uses no widget and no view.
  void Work(std::function<void()> job, std::function<void()> done,
            std::function<void(const std::string&)> failed);
  // Has `send` queue one command, and calls `done` with its reply or after the time-out, unless the
  // view is destroyed. Returns false and sends nothing while an earlier command still waits.
  bool AskInstrument(const std::function<void(CommandClient* client)>& send,
                     platform::Milliseconds timeout,
                     std::function<void(const CommandResult&)> done);

  // Asks the user; may be called in the constructor. Returns nothing if the screen ends meanwhile:
  // the caller then returns at once, because this object may have been destroyed.
  std::optional<platform::MessageAnswer> Ask(const std::string& text,
                                             platform::MessageButtons buttons,
                                             platform::MessageIcon icon);

  // Shows one line in the frame's status bar, for an event that nothing else shows; empty clears
  // it.
  void SetStatusLine(const std::string& text);
  // The same as a close by the user; may be refused.
  void CloseScreen();
  // Runs the code and closes the screen with a report if an exception leaves it.
  void Guard(const std::function<void()>& code);

  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void RunTick();
  void Fail(const std::string& reason);
  void ShowStatusLine();

  const ScreenRequest request_;
  // Set for good when the view has failed or is being destroyed. Shared with the questions of the
  // view, which return later.
  const std::shared_ptr<platform::Event> ended_;
  QTimer timer_;
  bool shown_ = false;
  bool ticking_ = false;
  bool failed_ = false;
  QString statusLine_;
  QPointer<QAbstractButton> defaultButton_;
  bool closesByEscape_ = false;
  std::unique_ptr<ChangeMonitor> monitor_;
  std::unique_ptr<ScreenWorker> worker_;
  std::unique_ptr<ReplyClient> replies_;
};

}  // namespace rvx
