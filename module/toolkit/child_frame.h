// The frame of a screen.
#pragma once

#include <QMainWindow>
#include <cstdint>
#include <memory>

#include "boundary/action.h"

namespace rvx {

class CFormView;

// A window with one view and a status bar. GUI thread. It deletes itself when it has been closed,
// so keep no pointer to it, only a handle of MakeHandle.
class CChildFrame : public QMainWindow {
 public:
  // The frames of actions have no index.
  static constexpr int32_t kNoFrameIndex = -1;

  // With another index than kNoFrameIndex the host decides about the frame: a wish to close it goes
  // to ReleaseFrame of the instrument manager.
  explicit CChildFrame(int32_t frameIndex = kNoFrameIndex, QWidget* parent = nullptr);
  ~CChildFrame() override;

  // Puts the view into the frame, which owns it from then on and passes the focus on to it.
  void AttachView(CFormView* view);
  CFormView* view() const { return view_; }
  // Returns 0 if the frame may close: the result of the view, 0 without a view.
  int32_t QueryClose();
  // Restores the frame if it is minimized, brings it to the front and gives it the focus. If its
  // view is being made and asks the user something, does so with the question.
  void RaiseToUser();
  // Closes the frame without calling QueryClose. It is deleted after the present event, so a view
  // may call this from inside its own code.
  void End();
  // False once it has been closed, though the object may still exist for a moment.
  bool IsOpen() const { return !closed_; }
  // Makes the handle for the thread of the screen's action. The caller owns it; it may outlive the
  // frame.
  std::unique_ptr<FrameWindow> MakeHandle();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;

 private:
  class Handle;
  struct Link;

  CFormView* view_ = nullptr;  // owned by Qt's parenthood
  const int32_t frameIndex_;
  bool closed_ = false;
  std::shared_ptr<Link> link_;  // shared with the handles
};

}  // namespace rvx
