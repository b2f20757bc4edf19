// An instrument and a screen that its action opens, as in a host. Used on the window's thread.
#pragma once

#include <QPointer>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "module/execution/screen_maker.h"
#include "module/toolkit/child_frame.h"
#include "module/toolkit/form_view.h"
#include "tests/module/execution/bench.h"
#include "tests/support/gui.h"

namespace rvx {

// Registers `maker` as the screen of the action `index` for the lifetime of the bench.
class ScreenBench {
 public:
  ScreenBench(ActionIndex index, ScreenMaker maker) : index_(index) {
    bench.host.userInterface = RunOnGuiThread;
    SetScreenMaker(index, std::move(maker));
    action = MakeAction();
  }
  // The instrument's destructor may wait for screens, which need this thread.
  ~ScreenBench() {
    action.reset();
    CloseInstrument();
    SetScreenMaker(index_, nullptr);
  }
  std::unique_ptr<Action> MakeAction() {
    return std::unique_ptr<Action>(bench.instrument->CreateActionByIndex(index_));
  }
  // Destroys the instrument on another thread while this one serves its screens.
  void CloseInstrument() {
    RunBeside([this] { bench.instrument.reset(); });
  }

  // Starts the action and waits for its screen and the screen's first tick.
  void Open() {
    action->Start(&watcher, "0,0");
    ASSERT_TRUE(PumpUntil([] { return frame() != nullptr && frame()->isVisible(); }));
    frame()->activateWindow();
    QApplication::processEvents();
  }
  // Waits until no screen is open and the action has reported its end; false if that does not
  // happen.
  bool IsOver() {
    return PumpUntil([this] { return frame() == nullptr && watcher.Count("finished 0,0") == 1; });
  }
  // The open frame, even while its screen is being made; null if there is none.
  static CChildFrame* frame() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* found = dynamic_cast<CChildFrame*>(widget);
      if (found != nullptr && found->IsOpen()) return found;
    }
    return nullptr;
  }

  Bench bench;
  RecordingWatcher watcher;  // must outlive the action
  std::unique_ptr<Action> action;

 private:
  const ActionIndex index_;
};

}  // namespace rvx
