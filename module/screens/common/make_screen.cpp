#include "module/screens/common/make_screen.h"

#include "module/instrument/c_rvx.h"
#include "module/screens/common/screen_view.h"

namespace rvx {

FrameWindow* OpenScreen(ScreenTable& table, const ScreenRequest& request,
                        const std::function<std::unique_ptr<CScreenView>()>& makeView) {
  return table.OpenOrRaise(request.instrument, request.label, [&]() -> std::unique_ptr<CFormView> {
    std::unique_ptr<CScreenView> view = makeView();
    // The view may have asked the user something and have been stopped meanwhile, or have failed,
    // which was then reported as its end: it is not shown then.
    if (view->HasFailed() || request.stopped->TryWait() ||
        request.instrument.closingEvent().TryWait()) {
      return nullptr;
    }
    return view;
  });
}

}  // namespace rvx
