#include "module/toolkit/screen_table.h"

#include "boundary/viscometer_instrument.h"
#include "module/toolkit/form_view.h"
#include "module/toolkit/gui_thread.h"

namespace rvx {

std::string MakeFrameTitle(const std::string& label, ViscometerInstrument& instrument) {
  const std::string id = instrument.GetInstrumentId();
  const std::string name = instrument.GetInstrumentName();
  std::string title = label + " (" + instrument.GetPortAddressText();
  if (!id.empty()) title += " : " + id;
  if (!id.empty() && !name.empty()) title += " : " + name;
  return title + ")";
}

FrameWindow* ScreenTable::OpenOrRaise(ViscometerInstrument& instrument, const std::string& label,
                                      const ViewMaker& makeView) {
  AssertGuiThread("ScreenTable::OpenOrRaise");
  if (CChildFrame* open = Find(instrument)) {
    open->RaiseToUser();
    return nullptr;
  }
  auto frame = std::make_unique<CChildFrame>();
  frame->setWindowTitle(QString::fromStdString(MakeFrameTitle(label, instrument)));
  // Before the view is made: the view may ask the user something, and a second start that comes
  // meanwhile must find this frame.
  frames_[&instrument] = frame.get();
  std::unique_ptr<CFormView> view = makeView();
  if (view == nullptr) return nullptr;
  frame->AttachView(view.release());
  frame->adjustSize();
  std::unique_ptr<FrameWindow> handle = frame->MakeHandle();
  // Last: what the view does when it is shown may destroy the frame.
  frame.release()->show();
  return handle.release();
}

CChildFrame* ScreenTable::Find(const ViscometerInstrument& instrument) const {
  const auto found = frames_.find(&instrument);
  if (found == frames_.end() || found->second.isNull()) return nullptr;
  return found->second->IsOpen() ? found->second.data() : nullptr;
}

}  // namespace rvx
