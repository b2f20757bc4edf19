// An instrument with a screen over it, opened by its action as a host does it.
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

class ScreenBench {
 public:
  ScreenBench(ActionIndex index, ScreenMaker maker) : index_(index) {
    bench.host.userInterface = RunOnGuiThread;
    SetScreenMaker(index, std::move(maker));
    action = MakeAction();
  }
  // Its end may wait for screens, which need this thread.
  ~ScreenBench() {
    action.reset();
    CloseInstrument();
    SetScreenMaker(index_, nullptr);
  }
  std::unique_ptr<Action> MakeAction() {
    return std::unique_ptr<Action>(bench.instrument->CreateActionByIndex(index_));
  }
  void CloseInstrument() {
    RunBeside([this] { bench.instrument.reset(); });
  }

  // Starts the action and waits for its screen.
  void Open() {
    action->Start(&watcher, "0,0");
    ASSERT_TRUE(PumpUntil([this] { return frame() != nullptr && frame()->isVisible(); }));
    frame()->activateWindow();
  }
  // Until nobody can see a screen and the action has said so.
  bool IsOver() {
    return PumpUntil([this] { return frame() == nullptr && watcher.Count("finished 0,0") == 1; });
  }
  // The one that is open, also while it is made.
  static CChildFrame* frame() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* found = dynamic_cast<CChildFrame*>(widget);
      if (found != nullptr && found->IsOpen()) return found;
    }
    return nullptr;
  }

  Bench bench;
  RecordingWatcher watcher;  // outlives the action
  std::unique_ptr<Action> action;

 private:
  const ActionIndex index_;
};

}  // namespace rvx
