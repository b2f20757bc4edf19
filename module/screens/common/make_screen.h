// The maker of a screen class, for SetScreenMaker.
#pragma once

#include <functional>
#include <memory>

#include "module/execution/screen_maker.h"
#include "module/toolkit/screen_table.h"

namespace rvx {

class CScreenView;

// Brings the instrument's screen of the table to the front, or opens the one of `makeView`. GUI
// thread, with no lock held.
FrameWindow* OpenScreen(ScreenTable& table, const ScreenRequest& request,
                        const std::function<std::unique_ptr<CScreenView>()>& makeView);

// The maker for `View`, which is made from a ScreenRequest; at most one for each instrument.
template <class View>
FrameWindow* MakeScreen(const ScreenRequest& request) {
  static ScreenTable table;
  return OpenScreen(table, request, [&request] { return std::make_unique<View>(request); });
}

}  // namespace rvx
