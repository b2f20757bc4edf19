// Actions that open a screen and watch it.
#pragma once

#include <string>

#include "module/execution/base_action.h"
#include "module/execution/screen_maker.h"
#include "module/instrument/action_table.h"

namespace rvx {

// An action with a screen, or with an editor in its place: the program chooses by SetScreenMaker
// and SetActionEditor. All thirteen of these actions are objects of this class.
class CScreenAction : public CBaseAction, public ScreenAction {
 public:
  CScreenAction(C_RVX& instrument, ActionIndex index, int labelId, std::string classKey);
  ~CScreenAction() override { StopRun(); }
  // Opens the screen on the user-interface thread and watches it until the user has closed it. The
  // screen is destroyed when the action is stopped. Throws ActionException where the program has no
  // such screen, and for a service screen below level 10.
  void Start(ActionWatcher* watcher, const std::string& context) override;
  // Calls the editor and returns its result; returns 1 without an editor.
  int32_t Edit() override;
  std::string GetClassName() override { return classKey_; }

  // ScreenAction
  Use GetUse() override;
  std::string GetCloseRefusal() override;

 private:
  // Throws if this is a service screen and the present user may not serve. The host's menu is no
  // guard: it may be older than a log-out.
  void RequireServiceRight();

  const ActionIndex index_;
  const std::string classKey_;
};

}  // namespace rvx
