// Actions that open a screen, and the thread that watches the screen.
#pragma once

#include <string>

#include "module/execution/base_action.h"

namespace rvx {

// Opens the screen of the record's action on the user-interface thread, and ends when the user has
// closed it or the action was stopped, in which case it destroys the screen.
void ViewThread(LaunchRecord& record);

// An action with a screen, or with an editor in its place: the program chooses by SetScreenMaker
// and SetActionEditor. All thirteen of these actions are objects of this class.
class CScreenAction final : public CBaseAction, public ScreenAction {
 public:
  CScreenAction(C_RVX& instrument, ActionIndex index, int labelId, std::string classKey);
  ~CScreenAction() override { StopRun(); }
  // Throws ActionException where the program has no such screen, and for a service screen below
  // level 10.
  void Start(ActionWatcher* watcher, const std::string& context) override;
  // Calls the editor and returns its result; returns 1 without an editor.
  int32_t Edit() override;
  std::string GetClassName() override { return classKey_; }
  ScreenMaker GetScreenMaker() override { return rvx::GetScreenMaker(index_); }

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
