// The open screens of a class, by instrument.
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

  // Does the work of a screen's PerformCreation. If the instrument's screen is open or being made,
  // brings it to the front and returns null. Otherwise makes a frame with the view of `makeView`,
  // sizes it to the form, shows it and returns its handle, which the caller owns. Without a view it
  // keeps no frame and returns null; an exception of `makeView` is passed on. `makeView` may ask
  // the user something. The instrument must outlive the frame; the thread of the screen's action
  // sees to that.
  FrameWindow* OpenOrRaise(ViscometerInstrument& instrument, const std::string& label,
                           const ViewMaker& makeView);
  // The instrument's open screen, or null.
  CChildFrame* Find(const ViscometerInstrument& instrument) const;

 private:
  // By the instrument and not by its port address, which may be the same for two instruments on two
  // ports.
  std::map<const ViscometerInstrument*, QPointer<CChildFrame>> frames_;
};

}  // namespace rvx
