#include "module/toolkit/child_frame.h"

#include <QApplication>
#include <QCloseEvent>
#include <QPointer>
#include <QStatusBar>
#include <atomic>

#include "boundary/host.h"
#include "module/toolkit/form_view.h"
#include "module/toolkit/gui_thread.h"

namespace rvx {

// The state that handles share with their frame, which may be destroyed before them.
struct CChildFrame::Link {
  std::atomic<bool> open{true};  // until the frame is destroyed; any thread
  CChildFrame* frame = nullptr;  // GUI thread only; null when it is destroyed
};

class CChildFrame::Handle final : public FrameWindow {
 public:
  explicit Handle(std::shared_ptr<Link> link) : link_(std::move(link)) {}
  bool Exists() override { return link_->open; }
  void Destroy() override {
    // After the wait nothing of the screen uses the instrument any more.
    RunOnGuiThread([this] { delete link_->frame; });
  }
  std::string GetCloseRefusal() override {
    AssertGuiThread("FrameWindow::GetCloseRefusal");
    CChildFrame* const frame = link_->frame;
    if (frame == nullptr || !frame->IsOpen() || frame->view() == nullptr) return std::string();
    return frame->view()->GetCloseRefusal();
  }

 private:
  const std::shared_ptr<Link> link_;
};

CChildFrame::CChildFrame(int32_t frameIndex, QWidget* parent)
    : QMainWindow(parent), frameIndex_(frameIndex), link_(std::make_shared<Link>()) {
  AssertGuiThread("CChildFrame");
  link_->frame = this;
  setAttribute(Qt::WA_DeleteOnClose);
  setFocusPolicy(Qt::StrongFocus);
  statusBar();  // the first call makes it
}

CChildFrame::~CChildFrame() {
  // The view is destroyed first: once the link says that the frame is closed, its action may end,
  // and what the view uses may be destroyed.
  delete view_;
  link_->frame = nullptr;
  link_->open = false;
}

void CChildFrame::AttachView(CFormView* view) {
  view_ = view;
  setCentralWidget(view);
  setFocusProxy(view);
}

int32_t CChildFrame::QueryClose() { return view_ != nullptr ? view_->QueryClose() : 0; }

void CChildFrame::End() {
  closed_ = true;
  hide();
  deleteLater();
}

void CChildFrame::RaiseToUser() {
  if (view_ == nullptr) {
    if (QWidget* question = QApplication::activeModalWidget()) {
      question->raise();
      question->activateWindow();
    }
    return;
  }
  if (isMinimized()) {
    setWindowState(windowState() & ~Qt::WindowMinimized);
  }
  show();
  raise();
  activateWindow();
  setFocus();
}

std::unique_ptr<FrameWindow> CChildFrame::MakeHandle() { return std::make_unique<Handle>(link_); }

void CChildFrame::closeEvent(QCloseEvent* event) {
  if (frameIndex_ != kNoFrameIndex) {
    event->ignore();
    GetInstrumentManager()->ReleaseFrame(frameIndex_);
    return;
  }
  // The view may ask the user, and an instrument that closes meanwhile destroys this frame.
  const QPointer<CChildFrame> self = this;
  if (QueryClose() != 0) {
    event->ignore();
    return;
  }
  if (self.isNull()) return;
  closed_ = true;
  event->accept();
}

void CChildFrame::focusInEvent(QFocusEvent* event) {
  QMainWindow::focusInEvent(event);
  if (view_ != nullptr) view_->setFocus(event->reason());
}

}  // namespace rvx
