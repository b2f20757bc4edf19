// The frame of a screen.
#pragma once

#include <QMainWindow>
#include <cstdint>
#include <memory>

#include "boundary/action.h"

namespace rvx {

class CFormView;

// A window with a status bar that holds one view. GUI thread. It deletes itself when it has been
// closed, so nobody keeps a pointer to it but what MakeHandle gives.
class CChildFrame : public QMainWindow {
 public:
  // The frames of actions have no index.
  static constexpr int32_t kNoFrameIndex = -1;

  // With another index than kNoFrameIndex the host decides about the frame: a wish to close it goes
  // to ReleaseFrame of the instrument manager.
  explicit CChildFrame(int32_t frameIndex = kNoFrameIndex, QWidget* parent = nullptr);
  ~CChildFrame() override;

  // Puts the view into the frame, which owns it from here on and hands the focus on to it.
  void AttachView(CFormView* view);
  CFormView* view() const { return view_; }
  // Whether the frame may close: the view's answer, 0 without a view.
  int32_t QueryClose();
  // Brings it to the top, not iconic any more, with the focus; while its view is being made and
  // asks the person something, the question.
  void RaiseToUser();
  // Takes it away without asking the view. It is deleted after the present event, so a view may
  // call this from inside its own code.
  void End();
  // False once it has been closed, though the object may still be there for a moment.
  bool IsOpen() const { return !closed_; }
  // What the thread of the screen's action gets. The caller owns it; it outlives the frame safely.
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
