// Which instrument has a screen of a class open.
#pragma once

#include <QPointer>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "module/toolkit/child_frame.h"

namespace rvx {

class CFormView;
class ViscometerInstrument;

// The title of a screen's frame: the label, and in parentheses port address, id and name of the
// instrument.
std::string MakeFrameTitle(const std::string& label, ViscometerInstrument& instrument);

// The open screens of one class, at most one for each instrument. One static object for each class;
// GUI thread only.
class ScreenTable {
 public:
  using ViewMaker = std::function<std::unique_ptr<CFormView>()>;

  // What a screen's PerformCreation does: raises the instrument's screen if it is open or being
  // made, and answers null; otherwise makes a frame with the view of `makeView`, sizes it to the
  // form, shows it and answers its handle, which the caller owns. Without a view there is no frame
  // either; what `makeView` raises passes through. It may ask the person something. The instrument
  // must outlive the frame; the thread of the screen's action sees to that.
  FrameWindow* OpenOrRaise(ViscometerInstrument& instrument, const std::string& label,
                           const ViewMaker& makeView);
  // The instrument's open screen, or null.
  CChildFrame* Find(const ViscometerInstrument& instrument) const;

 private:
  // By the instrument and not by its port address: that is the same for two instruments on two
  // ports.
  std::map<const ViscometerInstrument*, QPointer<CChildFrame>> frames_;
};

}  // namespace rvx
