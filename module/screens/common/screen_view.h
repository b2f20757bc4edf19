// The base of the screens of an instrument: what all of them do the same way.
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
#include "platform/prompt.h"

class QAbstractButton;

namespace rvx {

// The id that every form gives its Help button.
inline constexpr int kHelpId = 57670;

// A form over an instrument, in a frame of its own. GUI thread.
//
// A derived class sets up its form in the constructor, then calls BindButtons; what the screen
// decides is in a class without widgets. Its code runs inside Guard: what escapes from a handler
// that was connected with On, from Tick, from an event of the view or from the end of a job closes
// the screen with a report instead of ending the program.
class CScreenView : public CFormView {
 public:
  ~CScreenView() override;

  // Refuses with a beep and the reason in the status line, as GetCloseRefusal says.
  int32_t QueryClose() final;

 protected:
  // `request` is valid until the frame is gone.
  explicit CScreenView(const ScreenRequest& request);

  C_RVX& instrument() const { return request_.instrument; }
  const std::string& label() const { return request_.label; }
  // Send through it whatever moves or turns something: any end of the screen then sends CAB.
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

  // Calls Tick in this period of real time, first when the screen is shown.
  void SetTickPeriod(int milliseconds) { timer_.setInterval(milliseconds); }
  // Applies what depends on who is logged in (`level`, asked anew each time) or on the instrument.
  // Not called any more once the instrument closes.
  virtual void Tick(int32_t /*level*/) {}

  // Has `refresh` called after each change of an instrument that the host tells of.
  void RefreshOnChange(std::function<void()> refresh);

  // Runs `job` on another thread, after the jobs before it; then `done` here, or `failed` with
  // what it raised, unless the view is gone. For whatever may block, such as an archive. The job
  // uses no widget and no view.
  void Work(std::function<void()> job, std::function<void()> done,
            std::function<void(const std::string&)> failed);
  // Has `send` queue one command, and calls `done` with its reply or after the time-out, unless
  // the view is gone. False while an earlier one still waits: then nothing is sent.
  bool AskInstrument(const std::function<void(CommandClient* client)>& send,
                     platform::Milliseconds timeout,
                     std::function<void(const CommandResult&)> done);

  // Asks the person, also in the constructor. Nothing if the screen ends meanwhile: return at once,
  // because this object may be gone.
  std::optional<platform::MessageAnswer> Ask(const std::string& text,
                                             platform::MessageButtons buttons,
                                             platform::MessageIcon icon);

  // One line for what would else happen in silence; empty clears it.
  void SetStatusLine(const std::string& text);
  // As the user's wish to close; may be refused.
  void CloseScreen();
  // Runs the code and closes the screen with a report if anything escapes from it.
  void Guard(const std::function<void()>& code);

  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void RunTick();
  void Fail(const std::string& reason);
  void ShowStatusLine();

  const ScreenRequest request_;
  QTimer timer_;
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
